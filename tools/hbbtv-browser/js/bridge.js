// The page's end of the channel to the TV. The extension runs this with its native function
// and keeps what it returns: each object script gets it to call the TV and to hear the TV's
// events, and the extension hands events in through deliver. Nothing here is a page global.
(function (native) {
    'use strict';
    var handlers = Object.create(null);
    var slice = Array.prototype.slice;
    return {
        // "Object.method" in the TV with the arguments as values; its answer as a value.
        call: function (name) {
            return native(name, slice.call(arguments, 1));
        },
        on: function (name, handler) {
            handlers[name] = handler;
        },
        deliver: function (name, payload) {
            var handler = handlers[name];
            if (handler)
                handler(payload);
        }
    };
})
