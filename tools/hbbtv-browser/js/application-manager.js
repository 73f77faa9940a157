// The application manager object (application/oipfApplicationManager), its Application
// objects and their private data and key sets.
(function (tv) {
    'use strict';
    var MANAGER_TYPE = 'application/oipfApplicationManager';

    var KEYSET = {
        RED: 0x1, GREEN: 0x2, YELLOW: 0x4, BLUE: 0x8, NAVIGATION: 0x10, VCR: 0x20, SCROLL: 0x40,
        INFO: 0x80, NUMERIC: 0x100, ALPHA: 0x200, OTHER: 0x400
    };

    function KeySet(id) {
        this.setValue = function (value) {
            if (typeof value !== 'number' || !isFinite(value))
                throw new TypeError('KeySet.setValue takes a number');
            return tv.call('KeySet.setValue', id, value);
        };
        Object.defineProperty(this, 'value', { get: function () { return tv.call('KeySet.value', id); } });
        Object.defineProperty(this, 'maximumValue', { get: function () { return tv.call('KeySet.maximumValue', id); } });
        for (var name in KEYSET)
            Object.defineProperty(this, name, { value: KEYSET[name] });
    }

    function PrivateData(id) {
        this.keyset = new KeySet(id);
        Object.defineProperty(this, 'currentChannel', {
            get: function () { return tv.channelOf(tv.call('PrivateData.currentChannel', id)); }
        });
        this.getFreeMem = function () { return tv.call('PrivateData.getFreeMem'); };
    }

    var applications = {};

    function Application(id) {
        Object.defineProperty(this, 'id', { value: id });
        this.privateData = new PrivateData(id);
    }
    // A call on an application the library no longer knows throws (InvalidStateError).
    Application.prototype.show = function () { tv.call('Application.show', this.id); return true; };
    Application.prototype.hide = function () { tv.call('Application.hide', this.id); return true; };
    Application.prototype.destroyApplication = function () { tv.call('Application.destroyApplication', this.id); };
    Application.prototype.createApplication = function (uri, createChild) {
        if (typeof uri !== 'string')
            throw new TypeError('Application.createApplication takes a URI');
        var id = tv.call('Application.createApplication', this.id, uri, Boolean(createChild));
        return id === null ? null : applicationOf(id);
    };

    function applicationOf(id) {
        if (!applications[id])
            applications[id] = new Application(id);
        return applications[id];
    }
    tv.ownerApplication = function () {
        var id = tv.call('ApplicationManager.getOwnerApplication');
        return id === null ? null : applicationOf(id);
    };

    tv.method(MANAGER_TYPE, 'getOwnerApplication', function (doc) {
        if (doc !== undefined && doc !== document)
            return null;
        return tv.ownerApplication();
    });

    function notifyManagers(handler, argument) {
        Array.prototype.forEach.call(document.getElementsByTagName('object'), function (manager) {
            if (manager.type !== MANAGER_TYPE)
                return;
            if (typeof manager[handler] === 'function')
                manager[handler](argument);
            manager.dispatchEvent(new CustomEvent(handler.substring(2), { detail: argument }));
        });
    }

    tv.on('ApplicationManager.lowMemory', function () { notifyManagers('onLowMemory'); });
    tv.on('ApplicationManager.loadError', function (id) { notifyManagers('onApplicationLoadError', applicationOf(id)); });
    tv.on('ApplicationManager.destroyed', function (id) {
        notifyManagers('onApplicationDestroyed', applicationOf(id));
        delete applications[id];
    });
})
