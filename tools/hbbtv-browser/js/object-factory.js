// The object factory (window.oipfObjectFactory): the objects this terminal makes, each an
// <object> element of its type, as one written in the page is; and debug(), whose text goes
// to the TV's timeline.
(function (tv) {
    'use strict';
    var made = {
        createVideoBroadcastObject: 'video/broadcast',
        createApplicationManagerObject: 'application/oipfApplicationManager',
        createConfigurationObject: 'application/oipfConfiguration',
        createCapabilitiesObject: 'application/oipfCapabilities',
        createParentalControlManagerObject: 'application/oipfParentalControlManager'
    };
    var supported = Object.keys(made).map(function (method) { return made[method].toLowerCase(); });
    var factory = {
        isObjectSupported: function (mimeType) {
            return supported.indexOf(String(mimeType).toLowerCase()) >= 0;
        }
    };
    Object.keys(made).forEach(function (method) {
        factory[method] = function () {
            var element = document.createElement('object');
            element.type = made[method];
            return element;
        };
    });
    Object.defineProperty(window, 'oipfObjectFactory', { value: Object.freeze(factory), enumerable: true });
    Object.defineProperty(window, 'debug', {
        value: function (text) { tv.call('Page.debug', String(text)); },
        writable: true, configurable: true
    });
})
