// The key names a page compares with: KeyEvent.VK_* and the bare VK_* of HbbTV 1.x pages,
// from the TV's one key table; and the keys the library admits for the page.
(function (tv) {
    'use strict';
    var codes = tv.call('Keys.table');
    window.KeyEvent = window.KeyEvent || {};
    Object.keys(codes).forEach(function (name) {
        window.KeyEvent[name] = codes[name];
        if (!(name in window))
            Object.defineProperty(window, name, { value: codes[name], enumerable: true, writable: true, configurable: true });
    });

    tv.on('Keys.key', function (key) {
        var event = new KeyboardEvent(key.type, { bubbles: true, cancelable: true, key: key.key, code: key.code });
        Object.defineProperty(event, 'keyCode', { value: key.keyCode });
        Object.defineProperty(event, 'which', { value: key.keyCode });
        (document.activeElement || document.body || document).dispatchEvent(event);
    });
})
