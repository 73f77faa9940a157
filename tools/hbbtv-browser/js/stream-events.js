// Stream-event listeners on the broadcast video object.
(function (tv) {
    'use strict';
    var listeners = [];
    HTMLObjectElement.prototype.addStreamEventListener = function (url, eventName, listener) {
        if (typeof listener !== 'function')
            throw new TypeError('addStreamEventListener takes a listener function');
        listeners.push({ url: url, eventName: eventName, listener: listener });
        tv.call('StreamEvents.add', String(url), String(eventName), listeners.length);
    };
    HTMLObjectElement.prototype.removeStreamEventListener = function (url, eventName, listener) {
        for (var i = 0; i < listeners.length; ++i) {
            var entry = listeners[i];
            if (entry && entry.url === url && entry.eventName === eventName && entry.listener === listener) {
                listeners[i] = null;
                tv.call('StreamEvents.remove', i + 1);
            }
        }
    };
})
