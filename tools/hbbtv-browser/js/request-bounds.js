// A TV's bound on a page's own requests: an asynchronous XMLHttpRequest that receives
// nothing for the TV's load timeout ends as a failed one (readyState 4, status 0, its error
// event), and a fetch whose response has not begun by then is rejected, so that a server that
// never answers or stalls does not leave the page waiting for ever. A page's own timeout
// still applies.
(function (tv) {
    'use strict';

    var open = XMLHttpRequest.prototype.open, send = XMLHttpRequest.prototype.send;
    var synchronous = new WeakSet();
    XMLHttpRequest.prototype.open = function (method, url, async) {
        if (arguments.length > 2 && !async)
            synchronous.add(this);
        else
            synchronous.delete(this);
        return open.apply(this, arguments);
    };
    // One timer a request, armed while it is under way and again at each sign of life.
    var timers = new WeakMap(), watched = new WeakSet();
    function arm(request) {
        clearTimeout(timers.get(request));
        timers.set(request, setTimeout(function () {
            request.abort();
            request.dispatchEvent(new ProgressEvent('error'));
        }, tv.loadTimeout()));
    }
    function rearm() {
        if (timers.has(this))
            arm(this);
    }
    function disarm() {
        clearTimeout(timers.get(this));
        timers.delete(this);
    }
    XMLHttpRequest.prototype.send = function () {
        if (!synchronous.has(this)) {
            if (!watched.has(this)) {
                watched.add(this);
                this.addEventListener('progress', rearm);
                this.addEventListener('readystatechange', rearm);
                this.addEventListener('loadend', disarm);
            }
            arm(this);
        }
        try {
            return send.apply(this, arguments);
        } catch (e) {
            disarm.call(this);  // it never left
            throw e;
        }
    };

    var pageFetch = window.fetch;
    window.fetch = function (input, init) {
        var abort = new AbortController();
        // The page's own signal, given or in its Request, still aborts.
        [init && init.signal, input instanceof Request && input.signal].forEach(function (own) {
            if (!own)
                return;
            if (own.aborted)
                abort.abort();
            own.addEventListener('abort', function () { abort.abort(); });
        });
        var timer = setTimeout(function () { abort.abort(); }, tv.loadTimeout());
        var ended = function () { clearTimeout(timer); };
        var response = pageFetch.call(window, input, Object.assign({}, init, { signal: abort.signal }));
        response.then(ended, ended);
        return response;
    };
})
