// The A/V control object: an <object> of an A/V type (video/mp4, video/mpeg, audio/mp4,
// audio/mpeg, application/dash+xml) with its data URL. It plays through the engine's own
// media element, a <video> (or <audio>) the object holds and fills, which WebKit renders as
// the object's content; a DASH manifest is played through media source extensions
// (tv.dashPlayer). The page sees the object's states, position, speed and errors, and the
// TV's timeline hears of each change.
(function (tv) {
    'use strict';
    var TYPES = ['video/mp4', 'video/mpeg', 'audio/mp4', 'audio/mpeg', 'application/dash+xml'];
    var STOPPED = 0, PLAYING = 1, PAUSED = 2, CONNECTING = 3, BUFFERING = 4, FINISHED = 5, ERROR = 6;
    // The object's error codes, from the media element's.
    var FORMAT_NOT_SUPPORTED = 0, CANNOT_CONNECT = 1, UNIDENTIFIED = 2, CONTENT_CORRUPT = 4, NOT_AVAILABLE = 5;
    var MEDIA_ERRORS = { 1: UNIDENTIFIED, 2: CANNOT_CONNECT, 3: CONTENT_CORRUPT, 4: FORMAT_NOT_SUPPORTED };
    var SPEEDS = [0, 1, 2, 4];  // what the engine plays; it plays nothing backwards

    var states = new WeakMap();
    function stateOf(object) {
        if (TYPES.indexOf(String(object.type).toLowerCase()) < 0)
            throw new TypeError('not an A/V control object');
        if (!states.has(object))
            states.set(object, { playState: STOPPED, error: undefined, speed: 0, media: null, dash: null,
                                 fullScreen: false, windowed: null, queued: null, loads: 0, watchdog: 0, lastProgress: 0 });
        return states.get(object);
    }

    function position(state) {
        return state.media ? Math.round(state.media.currentTime * 1000) : 0;
    }

    // target: where a seek goes, else where the media is.
    function report(object, state, what, target) {
        tv.call('AvControl.changed', { data: String(object.data || ''), what: what, playState: state.playState,
                                       error: state.error === undefined ? null : state.error,
                                       position: target === undefined ? position(state) : target, speed: state.speed });
    }

    function setPlayState(object, playState, error) {
        var state = stateOf(object);
        if (state.playState === playState)
            return;
        state.playState = playState;
        state.error = playState === ERROR ? error : undefined;
        report(object, state, 'state');
        tv.fire(object, 'onPlayStateChange', 'PlayStateChange', [], { state: playState, error: state.error });
    }

    // Told for every play(), changed or not, as a TV tells it.
    function setSpeed(object, speed, told) {
        var state = stateOf(object);
        if (state.speed === speed && !told)
            return;
        state.speed = speed;
        tv.fire(object, 'onPlaySpeedChanged', 'PlaySpeedChanged', [speed], { speed: speed });
    }

    // The engine's media element, made when the object first plays; it fills the object.
    function mediaOf(object) {
        var state = stateOf(object);
        if (state.media)
            return state.media;
        var audio = String(object.type).toLowerCase().indexOf('audio/') === 0;
        var media = document.createElement(audio ? 'audio' : 'video');
        media.style.cssText = 'display:block;width:100%;height:100%;object-fit:contain;background:transparent';
        ['progress', 'loadedmetadata', 'loadeddata', 'canplay', 'playing', 'seeked'].forEach(function (name) {
            media.addEventListener(name, function () { state.lastProgress = Date.now(); });
        });
        media.addEventListener('playing', function () {
            setPlayState(object, state.speed === 0 ? PAUSED : PLAYING);
        });
        // The engine does not always say 'playing' when it resumes: a position that moves does.
        var last = -1;
        media.addEventListener('timeupdate', function () {
            var moved = media.currentTime !== last;
            last = media.currentTime;
            if (moved)
                state.lastProgress = Date.now();
            if (moved && !media.paused && !media.seeking && state.speed !== 0 &&
                (state.playState === PAUSED || state.playState === BUFFERING || state.playState === CONNECTING))
                setPlayState(object, PLAYING);
        });
        media.addEventListener('waiting', function () {
            if (state.playState === PLAYING)
                setPlayState(object, BUFFERING);
        });
        media.addEventListener('pause', function () {
            if (!media.ended && (state.playState === PLAYING || state.playState === BUFFERING))
                setPlayState(object, PAUSED);
        });
        media.addEventListener('ended', function () { finished(object); });
        media.addEventListener('error', function () {
            if (state.playState === STOPPED)
                return;
            var code = MEDIA_ERRORS[media.error ? media.error.code : 1];
            if (code !== FORMAT_NOT_SUPPORTED || state.dash)
                return failed(object, code);
            // The engine says the same of a file that is not there.
            diagnose(object, state, FORMAT_NOT_SUPPORTED);
        });
        media.addEventListener('seeked', function () {
            tv.fire(object, 'onPlayPositionChanged', 'PlayPositionChanged', [position(state)], { position: position(state) });
        });
        object.appendChild(media);
        state.media = media;
        return media;
    }

    // Asks the server what became of the source: there, it is what the engine made of it
    // (given); not there, not available; no answer within the bound, unreachable. Unless the
    // object has loaded something else meanwhile.
    function diagnose(object, state, given) {
        var load = state.loads;
        var fail = function (answer) {
            if (state.loads === load && state.playState !== ERROR && state.playState !== STOPPED)
                failed(object, answer);
        };
        var abort = new AbortController();
        var timer = setTimeout(function () { abort.abort(); }, tv.loadTimeout());
        fetch(state.media.currentSrc || String(object.data), { method: 'HEAD', signal: abort.signal }).then(function (response) {
            fail(response.ok ? given : NOT_AVAILABLE);
        }, function () { fail(CANNOT_CONNECT); }).then(function () { clearTimeout(timer); });
    }

    // The TV's bound: a source that gives the engine nothing it can play for that long (a
    // server that stalls, bytes that are no media) has failed, as the engine may wait for ever.
    function watch(object, state) {
        if (state.watchdog)
            return;
        state.lastProgress = Date.now();
        state.watchdog = setInterval(function () {
            var waiting = state.playState === CONNECTING || state.playState === BUFFERING;
            if (!waiting || Date.now() - state.lastProgress < tv.loadTimeout())
                return;
            clearInterval(state.watchdog);
            state.watchdog = 0;
            // A source that played has lost its connection; one that never did is asked about.
            if (state.media.readyState >= HTMLMediaElement.HAVE_METADATA || state.dash)
                failed(object, CANNOT_CONNECT);
            else
                diagnose(object, state, CONTENT_CORRUPT);
        }, 500);
    }

    function failed(object, code) {
        var state = stateOf(object);
        unload(state);
        setSpeed(object, 0);
        setPlayState(object, ERROR, code === undefined ? UNIDENTIFIED : code);
    }

    // At the end the object has finished; what was queued becomes its data and plays.
    function finished(object) {
        var state = stateOf(object);
        setSpeed(object, 0);
        setPlayState(object, FINISHED);
        if (state.queued === null)
            return;
        object.setAttribute('data', state.queued);
        state.queued = null;
        unload(state);
        setSpeed(object, 1);
        load(object);
    }

    function unload(state) {
        ++state.loads;
        clearInterval(state.watchdog);
        state.watchdog = 0;
        if (state.dash) {
            state.dash.stop();
            state.dash = null;
        }
        if (state.media) {
            state.media.pause();
            state.media.removeAttribute('src');
            state.media.load();
        }
    }

    // The engine counts a media load begun before the document's load has completed (a page
    // that plays from its onload) as part of the document's: a live stream would keep the page
    // from ever being loaded. Media begins once the TV has the page loaded, or at the TV's
    // bound after the document's load event (a load the TV reports otherwise, as failed).
    var documentLoaded = false, afterDocument = [];
    function documentIsLoaded() {
        documentLoaded = true;
        afterDocument.splice(0).forEach(function (begin) { begin(); });
    }
    tv.on('Page.loaded', documentIsLoaded);
    window.addEventListener('load', function () { setTimeout(documentIsLoaded, tv.loadTimeout()); });

    // From stopped, finished or an error: the data URL is loaded again, from its start.
    function load(object) {
        var state = stateOf(object);
        var media = mediaOf(object);
        var url = new URL(String(object.data), document.baseURI).href;
        var loads = state.loads;
        var begin = function () {
            if (state.loads !== loads)
                return;  // stopped or loaded again meanwhile
            state.lastProgress = Date.now();  // the watch's bound counts from here
            if (String(object.type).toLowerCase() === 'application/dash+xml')
                state.dash = tv.dashPlayer(url, media, function (code) { failed(object, code); });
            else
                media.src = url;
            if (state.speed !== 0)
                media.play().catch(function () {});
        };
        setPlayState(object, CONNECTING);
        watch(object, state);
        if (documentLoaded)
            begin();
        else
            afterDocument.push(begin);
    }

    function define(name, method) {
        TYPES.forEach(function (type) { tv.method(type, name, method); });
    }
    function getter(name, read) {
        TYPES.forEach(function (type) {
            tv.property(type, name, function () { return read(stateOf(this), this); });
        });
    }

    getter('playState', function (state) { return state.playState; });
    getter('error', function (state) { return state.error; });
    getter('speed', function (state) { return state.speed; });
    getter('playPosition', function (state) { return position(state); });
    getter('playTime', function (state) {
        var duration = state.media ? state.media.duration : NaN;
        return isFinite(duration) ? Math.round(duration * 1000) : 0;
    });
    getter('fullScreen', function (state) { return state.fullScreen; });
    getter('playSpeeds', function () { return SPEEDS.slice(); });

    // speed 0 pauses; another speed plays at it where the engine can (not backwards).
    define('play', function (speed) {
        var state = stateOf(this);
        speed = speed === undefined ? 1 : Number(speed);
        if (!this.data || isNaN(speed) || speed < 0) {
            setSpeed(this, state.speed, true);
            return false;
        }
        if (state.playState === STOPPED || state.playState === FINISHED || state.playState === ERROR)
            load(this);
        var media = state.media;
        setSpeed(this, speed, true);
        if (speed === 0) {
            media.pause();
            setPlayState(this, PAUSED);
        } else {
            media.playbackRate = speed;
            media.play().catch(function () {});
        }
        report(this, state, speed === 0 ? 'pause' : 'play');
        return true;
    });
    define('stop', function () {
        var state = stateOf(this);
        if (state.playState === STOPPED)
            return true;
        unload(state);
        setSpeed(this, 0);
        setPlayState(this, STOPPED);
        return true;
    });
    define('seek', function (milliseconds) {
        var state = stateOf(this);
        var target = Number(milliseconds);
        if (!state.media || isNaN(target) || target < 0 || state.playState === STOPPED || state.playState === ERROR)
            return false;
        state.media.currentTime = target / 1000;
        report(this, state, 'seek', Math.round(target));
        return true;
    });
    // Full screen covers the screen; back from it, the object is where the page had put it.
    var PLACEMENT = ['position', 'left', 'top', 'width', 'height'];
    var FULL = { position: 'fixed', left: '0', top: '0', width: '100%', height: '100%' };
    define('setFullScreen', function (fullScreen) {
        var state = stateOf(this);
        var style = this.style;
        if (Boolean(fullScreen) === state.fullScreen)
            return;
        state.fullScreen = Boolean(fullScreen);
        if (state.fullScreen)
            state.windowed = PLACEMENT.map(function (name) { return style[name]; });
        PLACEMENT.forEach(function (name, i) { style[name] = state.fullScreen ? FULL[name] : state.windowed[i]; });
        tv.fire(this, 'onFullScreenChange', 'FullScreenChange', [], {});
    });
    define('setVolume', function (volume) {
        var level = Number(volume);
        if (isNaN(level) || level < 0 || level > 100)
            return false;
        mediaOf(this).volume = level / 100;
        return true;
    });
    // The media's tracks as components: a transport stream's are named by their PIDs; one
    // audio and one video track at a time, subtitles while showing.
    TYPES.forEach(tv.components.define);
    var TRACK_LISTS = [['videoTracks', 'selected'], ['audioTracks', 'enabled'], ['textTracks', 'mode']];
    function isOn(track, flag) { return flag === 'mode' ? track.mode === 'showing' : track[flag]; }
    function tracksOf(object) {
        var state = stateOf(object);
        var transportStream = String(object.type).toLowerCase() === 'video/mpeg';
        var components = [];
        TRACK_LISTS.forEach(function (list, type) {
            var tracks = state.media && state.media[list[0]] ? state.media[list[0]] : [];
            for (var i = 0; i < tracks.length; ++i) {
                var track = tracks[i];
                if (type === 2 && track.kind !== 'subtitles' && track.kind !== 'captions')
                    continue;
                var pid = transportStream && /^[0-9a-f]+$/i.test(track.id) ? parseInt(track.id, 16) : undefined;
                components.push({ type: type, key: type + ':' + i, track: track, pid: pid, encoding: undefined,
                                  encrypted: false, language: track.language, audioDescription: /desc/.test(track.kind),
                                  hearingImpaired: track.kind === 'captions', active: isOn(track, list[1]) });
            }
        });
        return components;
    }
    define('getComponents', function (componentType) {
        return tv.components.collection(tracksOf(this), componentType);
    });
    define('getCurrentActiveComponents', function (componentType) {
        return tv.components.collection(tracksOf(this).filter(function (c) { return c.active; }),
                                        componentType);
    });
    function changeTrack(object, component, selected) {
        var components = tracksOf(object);
        var found = tv.components.named(component, components, !selected);
        if (!found)
            return;
        // Selecting one turns the others of its kind off; unselecting a kind turns all of it off.
        var wholeKind = !selected && typeof component === 'number';
        components.forEach(function (c) {
            if (c.type !== found.type || (c !== found && !selected && !wholeKind))
                return;
            var on = selected && c === found;
            if (c.type === 2)
                c.track.mode = on ? 'showing' : 'disabled';
            else
                c.track[TRACK_LISTS[c.type][1]] = on;
        });
    }
    define('selectComponent', function (component) { changeTrack(this, component, true); });
    define('unselectComponent', function (component) { changeTrack(this, component, false); });

    // One URL to play when what plays now ends; null empties the queue.
    define('queue', function (url) {
        var state = stateOf(this);
        if (url === null || url === undefined) {
            state.queued = null;
            return true;
        }
        if (state.queued !== null)
            return false;
        state.queued = new URL(String(url), document.baseURI).href;
        return true;
    });
})
