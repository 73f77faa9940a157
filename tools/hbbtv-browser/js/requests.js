// Every script request goes past the TV first; a refused one never leaves the page.
(function (tv) {
    'use strict';
    function allowed(url) {
        return tv.call('Requests.vet', new URL(url, document.baseURI).href);
    }
    var open = XMLHttpRequest.prototype.open;
    var send = XMLHttpRequest.prototype.send;
    var refused = new WeakMap();  // request -> whether it was opened asynchronously
    XMLHttpRequest.prototype.open = function (method, url, async) {
        if (allowed(url))
            refused.delete(this);
        else
            refused.set(this, async !== false);
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
        var target = resource instanceof Request ? resource.url : String(resource);
        if (!allowed(target))
            return Promise.reject(new TypeError('The TV refused the request for ' + target));
        return fetchOriginal.call(window, resource, init);
    };
})
