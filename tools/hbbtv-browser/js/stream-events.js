// Stream-event listeners on the video/broadcast object. A dvb: URL names a stream event
// object of the carousel; an http(s) URL an XML event description, which is fetched here
// and names the events' component tag and ids. Events come back from the TV with their
// name, data, text and status.
(function (tv) {
    'use strict';
    var TYPE = 'video/broadcast';
    var listeners = [null];  // by the number the TV knows them by

    function StreamEvent(event) {
        var names = ['name', 'data', 'text', 'status'];
        for (var i = 0; i < names.length; ++i)
            Object.defineProperty(this, names[i], { value: String(event[names[i]]), enumerable: true });
    }

    function fail(number, eventName) {
        setTimeout(function () { deliver({ listener: number, name: eventName, data: '', text: '', status: 'error' }); }, 0);
    }

    // <dsmcc><dsmcc_object component_tag="..."><stream_event stream_event_id="..." stream_event_name="..."/>
    function subscribeDescription(url, eventName, number) {
        var request = new XMLHttpRequest();
        request.onload = function () {
            var doc = request.responseXML || new DOMParser().parseFromString(request.responseText, 'text/xml');
            var events = doc ? doc.getElementsByTagName('stream_event') : [];
            for (var i = 0; i < events.length; ++i) {
                if (events[i].getAttribute('stream_event_name') !== eventName)
                    continue;
                var tag = Number(events[i].parentNode.getAttribute('component_tag'));
                var id = Number(events[i].getAttribute('stream_event_id'));
                if (!isFinite(tag) || !isFinite(id))
                    break;  // a description that names no stream
                tv.call('StreamEvents.addXml', eventName, tag, id, number);
                return;
            }
            fail(number, eventName);
        };
        request.onerror = function () { fail(number, eventName); };
        request.open('GET', url, true);
        request.send(null);
    }

    tv.method(TYPE, 'addStreamEventListener', function (url, eventName, listener) {
        if (typeof listener !== 'function')
            throw new TypeError('addStreamEventListener takes a listener function');
        var target = new URL(String(url), document.baseURI).href;
        listeners.push({ url: url, eventName: String(eventName), listener: listener, object: this });
        var number = listeners.length - 1;
        if (/^https?:/.test(target))
            subscribeDescription(target, String(eventName), number);
        else if (tv.call('StreamEvents.add', target, String(eventName), number) !== 0)
            fail(number, String(eventName));
    });
    tv.method(TYPE, 'removeStreamEventListener', function (url, eventName, listener) {
        for (var i = 1; i < listeners.length; ++i) {
            var entry = listeners[i];
            if (entry && entry.url === url && entry.eventName === String(eventName) && entry.listener === listener) {
                listeners[i] = null;
                tv.call('StreamEvents.remove', i);
            }
        }
    });

    function deliver(event) {
        var entry = listeners[event.listener];
        if (entry)
            entry.listener.call(entry.object, new StreamEvent(event));
    }
    tv.on('StreamEvents.event', deliver);
})
