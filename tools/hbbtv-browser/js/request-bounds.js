// A TV's bound on a page's own requests: an asynchronous XMLHttpRequest that receives
// nothing for the TV's load timeout ends as a failed one (readyState 4, status 0, its error
// event), and a fetch whose response has not begun by then is rejected, so that a server that
// never answers or stalls does not leave the page waiting for ever. A page's own timeout
// still applies.
(function (tv) {
    'use strict';
    var limit = 0;
    function quietLimit() {
        if (!limit)
            limit = Number(tv.call('Page.loadTimeout')) || 10000;
        return limit;
    }

    var open = XMLHttpRequest.prototype.open, send = XMLHttpRequest.prototype.send;
    var synchronous = new WeakSet();
    XMLHttpRequest.prototype.open = function (method, url, async) {
        if (arguments.length > 2 && !async)
            synchronous.add(this);
        else
            synchronous.delete(this);
        return open.apply(this, arguments);
    };
    XMLHttpRequest.prototype.send = function () {
        var request = this, timer = 0;
        if (!synchronous.has(request)) {
            var arm = function () {
                clearTimeout(timer);
                timer = setTimeout(function () {
                    request.abort();
                    request.dispatchEvent(new ProgressEvent('error'));
                }, quietLimit());
            };
            request.addEventListener('progress', arm);
            request.addEventListener('readystatechange', arm);
            request.addEventListener('loadend', function () { clearTimeout(timer); });
            arm();
        }
        return send.apply(request, arguments);
    };

    var pageFetch = window.fetch;
    window.fetch = function (input, init) {
        var abort = new AbortController();
        var own = init && init.signal;
        if (own) {
            if (own.aborted)
                abort.abort();
            own.addEventListener('abort', function () { abort.abort(); });
        }
        var timer = setTimeout(function () { abort.abort(); }, quietLimit());
        var ended = function () { clearTimeout(timer); };
        var response = pageFetch.call(this, input, Object.assign({}, init, { signal: abort.signal }));
        response.then(ended, ended);
        return response;
    };
})
