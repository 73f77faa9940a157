// DASH for the A/V control object, as a TV plays a manifest without a script library in the
// page: the MPD is read (tv.dashManifest), one video and one audio representation are
// chosen, and their segments are fetched (through the TV's request checks, as any request of
// the page) and appended to the media element through media source extensions, a little
// ahead of the position. Static manifests; segments addressed by SegmentTemplate (by number
// or with a SegmentTimeline), SegmentList, or a single file (SegmentBase or a bare BaseURL).
(function (tv) {
    'use strict';
    var CANNOT_CONNECT = 1, CONTENT_CORRUPT = 4, NOT_AVAILABLE = 5;
    var AHEAD_SECONDS = 30;

    function resolve(relative, base) { return new URL(relative, base).href; }
    function supports(mime) { return MediaSource.isTypeSupported(mime); }

    // One track: its source buffer, its segments, and the next one to fetch.
    function Track(mediaSource, mime, list) {
        this.buffer = mediaSource.addSourceBuffer(mime);
        this.buffer.timestampOffset = list.offset;
        this.list = list;
        this.init = list[0].start < 0 ? list[0] : null;
        this.next = this.init ? 1 : 0;
    }

    // The track's next segment is the one that holds the position.
    function seekTrack(track, position) {
        var at = track.init ? 1 : 0;
        for (var i = at; i < track.list.length; ++i)
            if (track.list[i].start <= position + 1e-3)
                at = i;
        track.next = at;
        track.done = false;
    }

    tv.dashPlayer = function (url, media, onError) {
        var mediaSource = new MediaSource();
        var tracks = [];
        var generation = 0;
        var stopped = false;
        var started = false;  // the tracks' initializations are in
        media.src = URL.createObjectURL(mediaSource);

        function fail(code) {
            if (!stopped)
                onError(code);
            stopped = true;
        }
        // A response that is not the file: the server does not have it (5), or will not give it (1).
        function fetched(address, read) {
            return fetch(address).then(function (response) {
                if (!response.ok)
                    throw { code: response.status === 404 || response.status === 410 ? NOT_AVAILABLE : CANNOT_CONNECT };
                return read(response);
            }, function () { throw { code: CANNOT_CONNECT }; });
        }
        function fetchBytes(address) {
            return fetched(address, function (response) { return response.arrayBuffer(); });
        }
        function append(track, bytes) {
            return new Promise(function (done, failed) {
                track.buffer.addEventListener('updateend', function ended() {
                    track.buffer.removeEventListener('updateend', ended);
                    done();
                });
                try {
                    track.buffer.appendBuffer(bytes);
                } catch (e) {
                    failed({ code: CONTENT_CORRUPT });
                }
            });
        }
        function bufferedAhead(track) {
            var ranges = track.buffer.buffered;
            for (var i = 0; i < ranges.length; ++i)
                if (ranges.start(i) <= media.currentTime + 0.5 && ranges.end(i) > media.currentTime)
                    return ranges.end(i) - media.currentTime;
            return 0;
        }
        // Fetches and appends the track's segments in turn, never far ahead of the position.
        function feed(track, run) {
            if (stopped || run !== generation)
                return Promise.resolve();
            if (track.next >= track.list.length)
                return Promise.resolve(track.done = true);
            if (bufferedAhead(track) > AHEAD_SECONDS)
                return new Promise(function (later) { setTimeout(later, 500); }).then(function () { return feed(track, run); });
            var segment = track.list[track.next++];
            return fetchBytes(segment.url).then(function (bytes) {
                return run === generation ? append(track, bytes) : null;
            }).then(function () { return feed(track, run); });
        }
        // Each track from the segment that holds the position, in a run of its own.
        function start() {
            var run = ++generation;
            started = true;
            tracks.forEach(function (track) { seekTrack(track, media.currentTime); });
            Promise.all(tracks.map(function (track) { return feed(track, run); })).then(function () {
                if (run === generation && !stopped && mediaSource.readyState === 'open' &&
                    tracks.every(function (track) { return track.done; }))
                    mediaSource.endOfStream();
            }, function (error) {
                if (run === generation)
                    fail(error && error.code !== undefined ? error.code : CONTENT_CORRUPT);
            });
        }
        // A seek outside what is buffered restarts the tracks there; one before the tracks
        // are ready is where they start.
        function seeking() {
            if (stopped || !started || tracks.every(function (track) { return bufferedAhead(track) > 0; }))
                return;
            tracks.forEach(function (track) {
                if (track.buffer.updating)
                    track.buffer.abort();
            });
            start();
        }
        media.addEventListener('seeking', seeking);

        mediaSource.addEventListener('sourceopen', function () {
            fetched(url, function (response) { return response.text(); }).then(function (text) {
                var mpd = new DOMParser().parseFromString(text, 'application/xml').documentElement;
                tv.dashManifest.read(mpd, url, {
                    resolve: resolve,
                    supports: supports,
                    duration: function (seconds) { mediaSource.duration = seconds; },
                    track: function (mime, list) { tracks.push(new Track(mediaSource, mime, list)); }
                });
                return Promise.all(tracks.map(function (track) {
                    return track.init ? fetchBytes(track.init.url).then(function (bytes) { return append(track, bytes); }) : null;
                }));
            }).then(start).catch(function (error) { fail(error && error.code !== undefined ? error.code : CONTENT_CORRUPT); });
        });

        return {
            stop: function () {
                stopped = true;
                ++generation;
                media.removeEventListener('seeking', seeking);
                URL.revokeObjectURL(media.src);
            }
        };
    };
})
