// The key names a page compares with: KeyEvent.VK_* and the bare VK_* of HbbTV 1.x pages,
// from the TV's one key table. Keys arrive as the engine's own input, trusted, with their
// default actions; for a remote-control key the engine does not know, the TV gives it a key
// it has no use for, and the event is given the remote's keyCode, key and code before any
// listener of the page sees it.
(function (tv) {
    'use strict';
    var table;
    try {
        table = tv.call('Keys.table');
    } catch (e) {
        return;  // a page of the TV's own, which takes no keys
    }
    var codes = table.constants;
    window.KeyEvent = window.KeyEvent || {};
    Object.keys(codes).forEach(function (name) {
        window.KeyEvent[name] = codes[name];
        if (!(name in window))
            Object.defineProperty(window, name, { value: codes[name], enumerable: true, writable: true, configurable: true });
    });

    function asRemoteKey(event) {
        var remote = table.engine[event.keyCode];
        if (!remote)
            return;
        Object.defineProperty(event, 'keyCode', { value: remote.keyCode });
        Object.defineProperty(event, 'which', { value: remote.keyCode });
        Object.defineProperty(event, 'key', { value: remote.key });
        Object.defineProperty(event, 'code', { value: remote.code });
    }
    ['keydown', 'keypress', 'keyup'].forEach(function (type) {
        window.addEventListener(type, asRemoteKey, true);
    });
})
