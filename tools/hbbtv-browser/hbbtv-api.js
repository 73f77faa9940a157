// The HbbTV 1.x objects a page sees, built on one native function that the web-process
// extension provides: native(name, text, a, b) runs the library's binding in the TV's main
// process, synchronously, and gives back [result, number, text]. The extension evaluates
// this before any script of the page runs.
(function (native) {
    'use strict';
    var MANAGER_TYPE = 'application/oipfApplicationManager';
    var NOT_FOUND = 3;

    var keyEvent = {
        VK_RED: 403, VK_GREEN: 404, VK_YELLOW: 405, VK_BLUE: 406,
        VK_LEFT: 37, VK_UP: 38, VK_RIGHT: 39, VK_DOWN: 40, VK_ENTER: 13, VK_BACK: 461,
        VK_PLAY: 415, VK_PAUSE: 19, VK_PLAY_PAUSE: 402, VK_STOP: 413, VK_FAST_FWD: 417,
        VK_REWIND: 412, VK_INFO: 457, VK_PAGE_UP: 33, VK_PAGE_DOWN: 34
    };
    for (var digit = 0; digit <= 9; ++digit)
        keyEvent['VK_' + digit] = 48 + digit;
    window.KeyEvent = window.KeyEvent || {};
    for (var key in keyEvent)
        window.KeyEvent[key] = keyEvent[key];

    var KEYSET = {
        RED: 0x1, GREEN: 0x2, YELLOW: 0x4, BLUE: 0x8, NAVIGATION: 0x10, VCR: 0x20, SCROLL: 0x40,
        INFO: 0x80, NUMERIC: 0x100, ALPHA: 0x200, OTHER: 0x400
    };

    function call(name, text, a, b) {
        var answer = native(name, text === undefined ? '' : String(text), Number(a) || 0, Number(b) || 0);
        return { result: answer[0], number: answer[1], text: answer[2] };
    }

    // A call on an application the library no longer knows is an error of the page.
    function checked(name, id, a) {
        var answer = call(name, '', id, a);
        if (answer.result === NOT_FOUND)
            throw new Error('Application.' + name + ': the application is gone');
        return answer;
    }

    function KeySet(id) {
        this.setValue = function (value) {
            if (typeof value !== 'number')
                throw new TypeError('KeySet.setValue takes a number');
            return checked('keysetSetValue', id, value).number;
        };
        Object.defineProperty(this, 'value', { get: function () { return checked('keysetValue', id).number; } });
        Object.defineProperty(this, 'maximumValue', { get: function () { return call('keysetMaximum').number; } });
        for (var name in KEYSET)
            Object.defineProperty(this, name, { value: KEYSET[name] });
    }

    function PrivateData(id) {
        this.keyset = new KeySet(id);
        Object.defineProperty(this, 'currentChannel', {
            get: function () {
                var answer = call('currentChannel', '', id);
                return answer.result === 0 ? { handle: answer.number } : null;
            }
        });
        this.getFreeMem = function () { return call('getFreeMem').number; };
    }

    var applications = {};

    function Application(id) {
        Object.defineProperty(this, 'id', { value: id });
        this.privateData = new PrivateData(id);
    }
    Application.prototype.show = function () { checked('show', this.id); return true; };
    Application.prototype.hide = function () { checked('hide', this.id); return true; };
    Application.prototype.destroyApplication = function () { checked('destroyApplication', this.id); };
    Application.prototype.createApplication = function (uri, createChild) {
        if (typeof uri !== 'string')
            throw new TypeError('Application.createApplication takes a URI');
        var answer = call('createApplication', uri, this.id, createChild ? 1 : 0);
        return answer.result === 0 ? applicationOf(answer.number) : null;
    };

    function applicationOf(id) {
        if (!applications[id])
            applications[id] = new Application(id);
        return applications[id];
    }

    function managers() {
        return Array.prototype.filter.call(document.getElementsByTagName('object'), function (element) {
            return element.type === MANAGER_TYPE;
        });
    }

    // The manager object's method; other objects do not have it.
    HTMLObjectElement.prototype.getOwnerApplication = function (doc) {
        if (this.type !== MANAGER_TYPE)
            throw new TypeError('getOwnerApplication is not a function');
        if (doc !== undefined && doc !== document)
            return null;
        var answer = call('getOwnerApplication');
        return answer.result === 0 ? applicationOf(answer.number) : null;
    };

    var streamListeners = [];
    HTMLObjectElement.prototype.addStreamEventListener = function (url, eventName, listener) {
        if (typeof listener !== 'function')
            throw new TypeError('addStreamEventListener takes a listener function');
        streamListeners.push({ url: url, eventName: eventName, listener: listener });
        call('addStreamEventListener', url, streamListeners.length);
    };
    HTMLObjectElement.prototype.removeStreamEventListener = function (url, eventName, listener) {
        for (var i = 0; i < streamListeners.length; ++i) {
            var entry = streamListeners[i];
            if (entry && entry.url === url && entry.eventName === eventName && entry.listener === listener) {
                streamListeners[i] = null;
                call('removeStreamEventListener', url, i + 1);
            }
        }
    };

    function notifyManagers(handler, argument) {
        managers().forEach(function (manager) {
            if (typeof manager[handler] === 'function')
                manager[handler](argument);
            manager.dispatchEvent(new CustomEvent(handler.substring(2), { detail: argument }));
        });
    }

    // Called by the TV through the view: the bindings' events, and keys the library admitted.
    var events = {
        lowMemory: function () { notifyManagers('onLowMemory'); },
        loadError: function (id) { notifyManagers('onApplicationLoadError', applicationOf(id)); },
        destroyed: function (id) {
            notifyManagers('onApplicationDestroyed', applicationOf(id));
            delete applications[id];
        },
        key: function (type, keyCode) {
            var event = new KeyboardEvent(type, { bubbles: true, cancelable: true });
            Object.defineProperty(event, 'keyCode', { value: keyCode });
            Object.defineProperty(event, 'which', { value: keyCode });
            (document.activeElement || document.body || document).dispatchEvent(event);
        }
    };
    Object.defineProperty(window, '__tesmoEvent', {
        value: function (name, argument, more) { events[name](argument, more); }
    });

    // Every script request goes past the TV first; a refused one never leaves the page.
    var REFUSED = 1;
    var open = XMLHttpRequest.prototype.open;
    var send = XMLHttpRequest.prototype.send;
    var refused = new WeakMap();  // request -> whether it was opened asynchronously
    XMLHttpRequest.prototype.open = function (method, url, async) {
        var target = new URL(url, document.baseURI).href;
        if (call('request', target).result === REFUSED)
            refused.set(this, async !== false);
        else
            refused.delete(this);
        return open.apply(this, arguments);
    };
    XMLHttpRequest.prototype.send = function () {
        if (!refused.has(this))
            return send.apply(this, arguments);
        if (!refused.get(this))
            throw new DOMException('The TV refused the request', 'NetworkError');
        var request = this;
        setTimeout(function () { request.dispatchEvent(new ProgressEvent('error')); }, 0);
    };
    var fetchOriginal = window.fetch;
    window.fetch = function (resource, init) {
        var target = new URL(resource instanceof Request ? resource.url : String(resource), document.baseURI).href;
        if (call('request', target).result === REFUSED)
            return Promise.reject(new TypeError('The TV refused the request for ' + target));
        return fetchOriginal.call(window, resource, init);
    };

    // The TV measures from the AIT to the first frame that holds the page.
    window.addEventListener('load', function () {
        requestAnimationFrame(function () { setTimeout(function () { call('painted'); }, 0); });
    });
})(__tesmoNative);
