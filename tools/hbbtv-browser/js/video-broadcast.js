// The video/broadcast object (an <object type="video/broadcast">, or one the object factory
// makes), its Channel, ChannelList and ChannelConfig. The TV tunes; the object follows it
// through the TV's events. Its rectangle is where the broadcast picture goes.
(function (tv) {
    'use strict';
    var TYPE = 'video/broadcast';
    var UNREALIZED = 0, CONNECTING = 1, PRESENTING = 2, STOPPED = 3;
    var UNIDENTIFIED_ERROR = 100;  // the channel change error for a picture the TV cannot play

    var CHANNEL_CONSTANTS = {
        TYPE_TV: 0, TYPE_RADIO: 1, TYPE_OTHER: 2,
        ID_ANALOG: 0, ID_DVB_C: 10, ID_DVB_S: 11, ID_DVB_T: 12, ID_DVB_SI_DIRECT: 13,
        ID_DVB_C2: 14, ID_DVB_S2: 15, ID_DVB_T2: 16, ID_ISDB_C: 20, ID_ISDB_S: 21, ID_ISDB_T: 22,
        ID_ATSC_T: 30, ID_IPTV_SDS: 40, ID_IPTV_URI: 41
    };

    function Channel(data) {
        for (var name in data)
            Object.defineProperty(this, name, { value: data[name], enumerable: true });
    }
    Object.keys(CHANNEL_CONSTANTS).forEach(function (name) {
        Object.defineProperty(Channel.prototype, name, { value: CHANNEL_CONSTANTS[name] });
    });
    tv.channelOf = function (data) { return data ? new Channel(data) : null; };

    function channelList(channels) {
        var list = tv.collection(channels);
        list.getChannel = function (ccid) {
            return channels.filter(function (c) { return c.ccid === ccid; })[0] || null;
        };
        list.getChannelByTriplet = function (onid, tsid, sid) {
            return channels.filter(function (c) {
                return c.onid === onid && (tsid === null || tsid === undefined || c.tsid === tsid) && c.sid === sid;
            })[0] || null;
        };
        return list;
    }

    // An error the TV answers with becomes the page's exception.
    var states = new WeakMap();
    function stateOf(object) {
        if (String(object.type).toLowerCase() !== TYPE)
            throw new TypeError('not a video/broadcast object');
        if (!states.has(object))
            states.set(object, { playState: UNREALIZED, channel: null, fullScreen: false, timer: 0 });
        return states.get(object);
    }

    function later(work) { setTimeout(work, 0); }

    function setPlayState(object, playState, error) {
        var state = stateOf(object);
        if (state.playState === playState && error === undefined)
            return;
        state.playState = playState;
        placeVideo(object);
        tv.fire(object, 'onPlayStateChange', 'PlayStateChange', [playState, error], { state: playState, error: error });
    }

    // The broadcast's stand-in as the object's own picture: a dark frame with the channel's
    // name, drawn by the object itself so that nothing the page paints behind it hides it.
    function standIn(name) {
        var text = String(name).replace(/[<>&"']/g, function (c) { return '&#' + c.charCodeAt(0) + ';'; });
        return 'url("data:image/svg+xml;charset=utf-8,' + encodeURIComponent(
            '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 1280 720" preserveAspectRatio="none">' +
            '<defs><linearGradient id="g" x1="0" y1="0" x2="0" y2="1"><stop offset="0" stop-color="#1a1f2e"/>' +
            '<stop offset="1" stop-color="#08080f"/></linearGradient></defs><rect width="1280" height="720" fill="url(#g)"/>' +
            '<text x="640" y="360" font-family="DejaVu Sans" font-weight="bold" font-size="56" fill="#ffffff" ' +
            'fill-opacity="0.35" text-anchor="middle">' + text + '</text></svg>') + '")';
    }

    // The object presents once the TV's picture plays; one that errs, or gives nothing for the
    // TV's load timeout, ends the channel change in an error, never connecting for ever. A
    // service without a picture (its stand-in) presents at once. The picture itself is the
    // TV's, on the plane behind the page, in the object's rectangle or full screen: no page
    // holds it or learns where it comes from.
    var waiting = [];  // objects connecting until the TV's picture plays or fails
    function present(object) {
        var state = stateOf(object);
        if (state.playState !== CONNECTING)
            return;
        var picture = tv.call('VideoBroadcast.picture');
        if (picture === 'none' || picture === 'playing')
            return setPlayState(object, PRESENTING);
        if (picture === 'error')
            return pictureFailed(object);
        clearTimeout(state.timer);
        state.timer = setTimeout(function () { pictureFailed(object); }, tv.loadTimeout());
        if (waiting.indexOf(object) < 0)
            waiting.push(object);
    }
    function pictureFailed(object) {
        var state = stateOf(object);
        clearTimeout(state.timer);
        if (state.playState !== CONNECTING)
            return;
        tv.fire(object, 'onChannelChangeError', 'ChannelChangeError', [state.channel, UNIDENTIFIED_ERROR],
                { channel: state.channel, errorState: UNIDENTIFIED_ERROR });
        setPlayState(object, UNREALIZED, UNIDENTIFIED_ERROR);
    }
    tv.on('VideoBroadcast.picture', function (picture) {
        if (picture === 'connecting')
            return;
        var connecting = waiting;
        waiting = [];
        connecting.forEach(function (object) {
            var state = stateOf(object);
            clearTimeout(state.timer);
            if (state.playState !== CONNECTING)
                return;
            if (picture === 'error')
                pictureFailed(object);
            else
                setPlayState(object, PRESENTING);
        });
    });

    // The broadcast picture goes where the object is, or full screen behind the page: the
    // service's own where the broadcast carries it, the object's stand-in otherwise.
    function placeVideo(object) {
        var state = stateOf(object);
        var box = object.getBoundingClientRect();
        var presenting = state.playState === PRESENTING || state.playState === CONNECTING;
        var windowed = presenting && !state.fullScreen;
        var standingIn = windowed && state.channel && tv.call('VideoBroadcast.picture') === 'none';
        object.style.backgroundImage = standingIn ? standIn(state.channel.name) : '';
        object.style.backgroundSize = windowed ? '100% 100%' : '';
        tv.call('VideoBroadcast.video', {
            presenting: presenting,
            fullScreen: state.fullScreen || state.playState === UNREALIZED,
            x: box.left, y: box.top, width: box.width, height: box.height
        });
    }

    function broadcastObjects() {
        return Array.prototype.filter.call(document.getElementsByTagName('object'), function (element) {
            return element.type === TYPE;
        });
    }

    function define(name, method) { tv.method(TYPE, name, method); }
    function getter(name, read) {
        tv.property(TYPE, name, function () { return read(stateOf(this), this); });
    }

    getter('playState', function (state) { return state.playState; });
    getter('fullScreen', function (state) { return state.fullScreen; });
    getter('currentChannel', function (state) {
        return state.playState === UNREALIZED ? null : tv.channelOf(tv.call('VideoBroadcast.currentChannel'));
    });

    define('bindToCurrentChannel', function () {
        var state = stateOf(this);
        var answer = tv.call('VideoBroadcast.bindToCurrentChannel');
        state.channel = tv.channelOf(answer.channel);
        if (state.playState === UNREALIZED || state.playState === STOPPED) {
            var object = this;
            setPlayState(object, CONNECTING);
            later(function () { present(object); });
        }
        return state.channel;
    });

    function changeChannel(object, answer) {
        var state = stateOf(object);
        if (answer.released) {
            state.channel = null;
            setPlayState(object, UNREALIZED);
        } else if (answer.channelError !== undefined) {
            later(function () {
                tv.fire(object, 'onChannelChangeError', 'ChannelChangeError', [state.channel, answer.channelError],
                     { channel: state.channel, errorState: answer.channelError });
            });
        } else if (answer.channel) {
            later(function () { channelChanged(object, answer.channel); });
        } else {
            setPlayState(object, CONNECTING);
        }
    }

    function channelChanged(object, data) {
        var state = stateOf(object);
        state.channel = tv.channelOf(data);
        tv.fire(object, 'onChannelChangeSucceeded', 'ChannelChangeSucceeded', [state.channel], { channel: state.channel });
        setPlayState(object, CONNECTING);
        present(object);
    }

    define('setChannel', function (channel, trickplay, contentAccessDescriptorURL) {
        stateOf(this);
        if (channel !== null && typeof channel !== 'object')
            throw new TypeError('setChannel takes a Channel or null');
        changeChannel(this, tv.call('VideoBroadcast.setChannel', channel === null ? null : {
            ccid: channel.ccid, onid: channel.onid, tsid: channel.tsid, sid: channel.sid
        }, Boolean(trickplay), contentAccessDescriptorURL || ''));
    });
    define('prevChannel', function () { stateOf(this); changeChannel(this, tv.call('VideoBroadcast.step', -1)); });
    define('nextChannel', function () { stateOf(this); changeChannel(this, tv.call('VideoBroadcast.step', 1)); });
    define('stop', function () {
        var state = stateOf(this);
        if (state.playState !== UNREALIZED)
            setPlayState(this, STOPPED);
    });
    define('release', function () {
        var state = stateOf(this);
        state.channel = null;
        state.fullScreen = false;
        setPlayState(this, UNREALIZED);
    });
    define('setFullScreen', function (fullScreen) {
        var state = stateOf(this);
        state.fullScreen = Boolean(fullScreen);
        placeVideo(this);
        tv.fire(this, 'onFullScreenChange', 'FullScreenChange', [], {});
    });
    define('getChannelConfig', function () {
        stateOf(this);
        return new ChannelConfig();
    });
    define('createChannelObject', function (idType, a, b, c) {
        stateOf(this);
        // (idType, dsd, sid) or (idType, onid, tsid, sid, ...)
        var triplet = c === undefined ? { onid: 0, tsid: 0, sid: b } : { onid: a, tsid: b, sid: c };
        var known = new ChannelConfig().channelList.getChannelByTriplet(triplet.onid, triplet.tsid, triplet.sid);
        return known || new Channel({ idType: idType, onid: triplet.onid, tsid: triplet.tsid, sid: triplet.sid,
                                      ccid: '', name: '', channelType: CHANNEL_CONSTANTS.TYPE_TV });
    });

    function ChannelConfig() {
        var channels = tv.call('ChannelConfig.channelList').map(tv.channelOf);
        Object.defineProperty(this, 'channelList', { value: channelList(channels) });
    }

    // The service's components, from its PMT; one of each kind is active at a time (no
    // subtitles at first), and selecting another audio switches the picture's.
    tv.components.define(TYPE);
    function components(object) {
        stateOf(object);
        return tv.call('VideoBroadcast.components').map(function (c) { return Object.assign(c, { key: c.pid }); });
    }
    define('getComponents', function (componentType) {
        return tv.components.collection(components(this), componentType);
    });
    define('getCurrentActiveComponents', function (componentType) {
        return tv.components.collection(components(this).filter(function (c) { return c.active; }), componentType);
    });
    function changeComponent(object, component, selected) {
        var found = tv.components.named(component, components(object), !selected);
        if (!found || !tv.call(selected ? 'VideoBroadcast.selectComponent' : 'VideoBroadcast.unselectComponent',
                                found.pid))
            return;
        later(function () {
            tv.fire(object, 'onSelectedComponentChanged', 'SelectedComponentChanged', [found.type],
                    { componentType: found.type });
        });
    }
    define('selectComponent', function (component) { changeComponent(this, component, true); });
    define('unselectComponent', function (component) { changeComponent(this, component, false); });

    // The present and following programmes of the service, from its EIT; none for a
    // broadcast-independent application. The objects hear when they change.
    getter('programmes', function () { return tv.programmes(tv.call('VideoBroadcast.programmes')); });
    tv.on('VideoBroadcast.programmesChanged', function () {
        broadcastObjects().forEach(function (object) {
            if (stateOf(object).playState !== UNREALIZED)
                tv.fire(object, 'onProgrammesChanged', 'ProgrammesChanged', [], {});
        });
    });

    tv.on('VideoBroadcast.channelChanged', function (data) {
        broadcastObjects().forEach(function (object) {
            if (stateOf(object).playState !== UNREALIZED)
                channelChanged(object, data);
        });
    });
})
