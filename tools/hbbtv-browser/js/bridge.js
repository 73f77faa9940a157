// The page's end of the channel to the TV. The extension runs this with its native function
// and keeps what it returns: each object script gets it to call the TV, to hear the TV's
// events and to give <object> elements of its type their members, and the extension hands
// events in through deliver. Nothing here is a page global.
(function (native) {
    'use strict';
    var handlers = Object.create(null);
    var members = Object.create(null);  // member name -> object type -> { get } or { value }
    var slice = Array.prototype.slice;
    var DEFAULT_BOUND_MS = 10000;

    // One property on every <object>; what it is depends on the element's type, and an
    // element of another type does not have it.
    function install(name) {
        members[name] = Object.create(null);
        Object.defineProperty(HTMLObjectElement.prototype, name, {
            configurable: true,
            get: function () {
                var member = members[name][String(this.type).toLowerCase()];
                if (!member)
                    return undefined;
                return member.get ? member.get.call(this) : member.value;
            }
        });
    }
    function member(type, name, definition) {
        if (!members[name])
            install(name);
        members[name][type.toLowerCase()] = definition;
    }

    // The TV's error as the page's: a TypeError, or a DOMException of the name, with the code
    // HbbTV gives the error where it gives one.
    function thrown(error) {
        var made = error.name === 'TypeError' ? new TypeError(error.message) : new DOMException(error.message, error.name);
        if (error.code !== undefined)
            Object.defineProperty(made, 'code', { value: error.code });
        return made;
    }

    var bound = 0;

    // The DAE's read-only Collection: length, item(index) and the items by index.
    function Collection(items) {
        Object.defineProperty(this, 'length', { value: items.length });
        this.item = function (index) { return items[index] || null; };
        for (var i = 0; i < items.length; ++i)
            Object.defineProperty(this, i, { value: items[i], enumerable: true });
    }

    var tv = {
        // A method of <object type="TYPE"> elements.
        method: function (type, name, implementation) { member(type, name, { value: implementation }); },
        // A read-only property of <object type="TYPE"> elements.
        property: function (type, name, read) { member(type, name, { get: read }); },
        // "Object.method" in the TV with the arguments as values: its value, or its error thrown.
        call: function (name) {
            var reply = native(name, slice.call(arguments, 1));
            if (!reply || typeof reply !== 'object' || !('value' in reply || 'error' in reply))
                throw new DOMException('the TV gave no answer', 'InvalidStateError');
            if (reply.error)
                throw thrown(reply.error);
            return reply.value;
        },
        // One handler an event name.
        on: function (name, handler) {
            handlers[name] = handler;
        },
        collection: function (items) { return new Collection(items); },
        // An object's event: its on... handler first, then the DOM event with the details.
        fire: function (object, handler, name, args, detail) {
            if (typeof object[handler] === 'function')
                object[handler].apply(object, args);
            var event = new Event(name);
            for (var key in detail)
                Object.defineProperty(event, key, { value: detail[key] });
            object.dispatchEvent(event);
        },
        deliver: function (name, payload) {
            var handler = handlers[name];
            if (handler)
                handler(payload);
        },
        // The TV's bound on what a page waits for (its load timeout, in milliseconds), asked once.
        loadTimeout: function () {
            if (!bound) {
                try {
                    bound = Number(tv.call('Page.loadTimeout')) || DEFAULT_BOUND_MS;
                } catch (e) {
                    bound = DEFAULT_BOUND_MS;
                }
            }
            return bound;
        }
    };
    return tv;
})
