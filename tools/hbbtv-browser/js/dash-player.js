// DASH for the A/V control object, as a TV plays a manifest without a script library in the
// page: the MPD is read here, one video and one audio representation are chosen, and their
// segments are fetched (through the TV's request checks, as any request of the page) and
// appended to the media element through media source extensions, a little ahead of the
// position. Static manifests; segments addressed by SegmentTemplate (by number or with a
// SegmentTimeline), SegmentList, or a single file (SegmentBase or a bare BaseURL).
(function (tv) {
    'use strict';
    var FORMAT_NOT_SUPPORTED = 0, CANNOT_CONNECT = 1, CONTENT_CORRUPT = 4, NOT_AVAILABLE = 5;
    var AHEAD_SECONDS = 30;
    var MAX_SEGMENTS = 100000;  // a manifest that lists more is not believed
    var MAX_NUMBER_WIDTH = 16;

    function children(element, name) {
        return Array.prototype.filter.call(element ? element.children : [], function (c) { return c.localName === name; });
    }
    function child(element, name) { return children(element, name)[0] || null; }

    // ISO 8601 durations as an MPD writes them: PnYnMnDTnHnMnS.
    function seconds(text) {
        var parts = /^P(?:(\d+)Y)?(?:(\d+)M)?(?:(\d+)D)?(?:T(?:(\d+)H)?(?:(\d+)M)?(?:([\d.]+)S)?)?$/.exec(String(text || ''));
        if (!parts)
            return NaN;
        var factors = [365 * 86400, 30 * 86400, 86400, 3600, 60, 1];
        return factors.reduce(function (sum, factor, i) { return sum + (Number(parts[i + 1]) || 0) * factor; }, 0);
    }

    function resolve(base, element) {
        var url = child(element, 'BaseURL');
        return url ? new URL(url.textContent.trim(), base).href : base;
    }

    function fill(template, representation, number, time) {
        return template.replace(/\$(RepresentationID|Number|Time|Bandwidth|)(%0(\d+)d)?\$/g, function (all, name, format, width) {
            if (name === '')
                return '$';
            var value = String({ RepresentationID: representation.getAttribute('id'), Number: number, Time: time,
                                 Bandwidth: representation.getAttribute('bandwidth') }[name]);
            var pad = Math.min(Number(width) || 0, MAX_NUMBER_WIDTH) - value.length;
            return pad > 0 ? '0'.repeat(pad) + value : value;
        });
    }

    // The nearest of the element's ancestors (Representation, AdaptationSet, Period) that says it.
    function inherited(chain, name) {
        for (var i = 0; i < chain.length; ++i)
            if (child(chain[i], name))
                return child(chain[i], name);
        return null;
    }

    function tooMany() { throw { code: CONTENT_CORRUPT }; }

    // [{ url, start }] for the representation in presentation time, the initialization first
    // (start -1); its offset is what the media's own timestamps are moved by.
    function segments(chain, base, periodSeconds) {
        var representation = chain[0];
        var template = inherited(chain, 'SegmentTemplate');
        var list = inherited(chain, 'SegmentList');
        var out = [];
        out.offset = 0;
        if (template) {
            var timescale = Number(template.getAttribute('timescale')) || 1;
            var number = Number(template.getAttribute('startNumber') || 1);
            var offset = (Number(template.getAttribute('presentationTimeOffset')) || 0) / timescale;
            out.offset = -offset;
            if (template.getAttribute('initialization'))
                out.push({ url: new URL(fill(template.getAttribute('initialization'), representation, 0, 0), base).href, start: -1 });
            var timeline = child(template, 'SegmentTimeline');
            var media = template.getAttribute('media');
            if (timeline) {
                var time = 0;
                children(timeline, 'S').forEach(function (s) {
                    time = s.hasAttribute('t') ? Number(s.getAttribute('t')) : time;
                    var d = Number(s.getAttribute('d'));
                    var r = Number(s.getAttribute('r') || 0);
                    if (!(d > 0))
                        return;
                    // r="-1" repeats the segment to the period's end.
                    var count = r < 0 ? Math.ceil((periodSeconds + offset) * timescale / d - time / d) : r + 1;
                    if (!(count > 0) || out.length + count > MAX_SEGMENTS)
                        tooMany();
                    for (var i = 0; i < count; ++i, time += d)
                        out.push({ url: new URL(fill(media, representation, number++, time), base).href, start: time / timescale - offset });
                });
            } else {
                var duration = Number(template.getAttribute('duration')) / timescale;
                if (duration > 0 && periodSeconds / duration > MAX_SEGMENTS)
                    tooMany();
                for (var t = 0; duration > 0 && t < periodSeconds - 1e-3; t += duration)
                    out.push({ url: new URL(fill(media, representation, number++, Math.round((t + offset) * timescale)), base).href, start: t });
            }
        } else if (list) {
            var initialization = child(list, 'Initialization');
            if (initialization)
                out.push({ url: new URL(initialization.getAttribute('sourceURL'), base).href, start: -1 });
            var step = Number(list.getAttribute('duration')) / (Number(list.getAttribute('timescale')) || 1) || 0;
            if (children(list, 'SegmentURL').length > MAX_SEGMENTS)
                tooMany();
            children(list, 'SegmentURL').forEach(function (s, i) {
                out.push({ url: new URL(s.getAttribute('media'), base).href, start: i * step });
            });
        } else {
            out.push({ url: base, start: 0 });
        }
        return out;
    }

    // The representation's type with its codecs, or without them when the engine does not
    // know the codecs' names as written; "" when it plays neither.
    function mimeOf(chain) {
        var attribute = function (name) {
            for (var i = 0; i < chain.length; ++i)
                if (chain[i].getAttribute(name))
                    return chain[i].getAttribute(name);
            return '';
        };
        var type = attribute('mimeType'), codecs = attribute('codecs');
        var withCodecs = codecs ? type + '; codecs="' + codecs + '"' : type;
        return [withCodecs, type].filter(function (mime) { return mime && MediaSource.isTypeSupported(mime); })[0] || '';
    }

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
                if (!mpd || mpd.localName !== 'MPD')
                    throw { code: CONTENT_CORRUPT };
                if (mpd.getAttribute('type') === 'dynamic')
                    throw { code: FORMAT_NOT_SUPPORTED };
                var period = child(mpd, 'Period');
                var total = seconds(mpd.getAttribute('mediaPresentationDuration'));
                var periodSeconds = seconds(period && period.getAttribute('duration')) || total;
                if (!period || !(periodSeconds > 0))
                    throw { code: CONTENT_CORRUPT };
                mediaSource.duration = total || periodSeconds;
                var base = resolve(resolve(url, mpd), period);
                var kinds = {};
                children(period, 'AdaptationSet').forEach(function (set) {
                    children(set, 'Representation').sort(function (a, b) {
                        return Number(a.getAttribute('bandwidth')) - Number(b.getAttribute('bandwidth'));
                    }).some(function (representation) {
                        var chain = [representation, set, period];
                        var mime = mimeOf(chain);
                        var kind = mime.split('/')[0];
                        if (!mime || kinds[kind])
                            return false;
                        var list = segments(chain, resolve(resolve(base, set), representation), periodSeconds);
                        tracks.push(new Track(mediaSource, mime, list));
                        return (kinds[kind] = true);
                    });
                });
                if (tracks.length === 0)
                    throw { code: FORMAT_NOT_SUPPORTED };
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
