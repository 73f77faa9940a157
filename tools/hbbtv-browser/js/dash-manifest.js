// Reading a DASH manifest for the DASH player (tv.dashPlayer): the period, the durations, the
// representations chosen, and their segments' URLs. It walks the parsed MPD through what any
// element has (children, localName, getAttribute, hasAttribute, textContent), and is given
// how URLs resolve and which media types play, so that it needs no page to run.
(function (tv) {
    'use strict';
    var FORMAT_NOT_SUPPORTED = 0, CONTENT_CORRUPT = 4;
    var MAX_SEGMENTS = 100000;  // a manifest that lists more is not believed
    var MAX_NUMBER_WIDTH = 16;

    function children(element, name) {
        return Array.prototype.filter.call(element ? element.children : [], function (c) { return c.localName === name; });
    }
    function child(element, name) { return children(element, name)[0] || null; }

    // ISO 8601 durations as an MPD writes them: PnYnMnDTnHnMnS.
    function seconds(text) {
        var parts = /^P(?:(\d+)Y)?(?:(\d+)M)?(?:(\d+)D)?(?:T(?:(\d+)H)?(?:(\d+)M)?(?:([\d.]+)S)?)?$/.exec(String(text || ''));
        if (!parts)
            return NaN;
        var factors = [365 * 86400, 30 * 86400, 86400, 3600, 60, 1];
        return factors.reduce(function (sum, factor, i) { return sum + (Number(parts[i + 1]) || 0) * factor; }, 0);
    }

    // The element's BaseURL against the base, or the base.
    function baseOf(base, element, resolve) {
        var url = child(element, 'BaseURL');
        return url ? resolve(url.textContent.trim(), base) : base;
    }

    function fill(template, representation, number, time) {
        return template.replace(/\$(RepresentationID|Number|Time|Bandwidth|)(%0(\d+)d)?\$/g, function (all, name, format, width) {
            if (name === '')
                return '$';
            var value = String({ RepresentationID: representation.getAttribute('id'), Number: number, Time: time,
                                 Bandwidth: representation.getAttribute('bandwidth') }[name]);
            var pad = Math.min(Number(width) || 0, MAX_NUMBER_WIDTH) - value.length;
            return pad > 0 ? '0'.repeat(pad) + value : value;
        });
    }

    // The nearest of the element's ancestors (Representation, AdaptationSet, Period) that says it.
    function inherited(chain, name) {
        for (var i = 0; i < chain.length; ++i)
            if (child(chain[i], name))
                return child(chain[i], name);
        return null;
    }

    function tooMany() { throw { code: CONTENT_CORRUPT }; }

    // [{ url, start }] for the representation in presentation time, the initialization first
    // (start -1); its offset is what the media's own timestamps are moved by.
    function segments(chain, base, periodSeconds, resolve) {
        var representation = chain[0];
        var template = inherited(chain, 'SegmentTemplate');
        var list = inherited(chain, 'SegmentList');
        var out = [];
        out.offset = 0;
        if (template) {
            var timescale = Number(template.getAttribute('timescale')) || 1;
            var number = Number(template.getAttribute('startNumber') || 1);
            var offset = (Number(template.getAttribute('presentationTimeOffset')) || 0) / timescale;
            out.offset = -offset;
            if (template.getAttribute('initialization'))
                out.push({ url: resolve(fill(template.getAttribute('initialization'), representation, 0, 0), base), start: -1 });
            var timeline = child(template, 'SegmentTimeline');
            var media = template.getAttribute('media');
            if (timeline) {
                var time = 0;
                children(timeline, 'S').forEach(function (s) {
                    time = s.hasAttribute('t') ? Number(s.getAttribute('t')) : time;
                    var d = Number(s.getAttribute('d'));
                    var r = Number(s.getAttribute('r') || 0);
                    if (!(d > 0))
                        return;
                    // r="-1" repeats the segment to the period's end.
                    var count = r < 0 ? Math.ceil((periodSeconds + offset) * timescale / d - time / d) : r + 1;
                    if (!(count > 0) || out.length + count > MAX_SEGMENTS)
                        tooMany();
                    for (var i = 0; i < count; ++i, time += d)
                        out.push({ url: resolve(fill(media, representation, number++, time), base), start: time / timescale - offset });
                });
            } else {
                var duration = Number(template.getAttribute('duration')) / timescale;
                if (duration > 0 && periodSeconds / duration > MAX_SEGMENTS)
                    tooMany();
                for (var t = 0; duration > 0 && t < periodSeconds - 1e-3; t += duration)
                    out.push({ url: resolve(fill(media, representation, number++, Math.round((t + offset) * timescale)), base), start: t });
            }
        } else if (list) {
            var initialization = child(list, 'Initialization');
            if (initialization)
                out.push({ url: resolve(initialization.getAttribute('sourceURL'), base), start: -1 });
            var step = Number(list.getAttribute('duration')) / (Number(list.getAttribute('timescale')) || 1) || 0;
            if (children(list, 'SegmentURL').length > MAX_SEGMENTS)
                tooMany();
            children(list, 'SegmentURL').forEach(function (s, i) {
                out.push({ url: resolve(s.getAttribute('media'), base), start: i * step });
            });
        } else {
            out.push({ url: base, start: 0 });
        }
        return out;
    }

    // The representation's type with its codecs, or without them when the engine does not
    // know the codecs' names as written; "" when it plays neither.
    function mimeOf(chain, supports) {
        var attribute = function (name) {
            for (var i = 0; i < chain.length; ++i)
                if (chain[i].getAttribute(name))
                    return chain[i].getAttribute(name);
            return '';
        };
        var type = attribute('mimeType'), codecs = attribute('codecs');
        var withCodecs = codecs ? type + '; codecs="' + codecs + '"' : type;
        return [withCodecs, type].filter(function (mime) { return mime && supports(mime); })[0] || '';
    }

    // Reads the MPD element of the manifest at url: the first period's leanest playable
    // representation of each kind (video, audio). The environment resolves URLs
    // (resolve(relative, base) -> absolute), knows the types the engine plays (supports(mime)),
    // and is told the presentation's duration(seconds), then each track(mime, segments) as it
    // is chosen, so that the player sets up each before the next is read. Throws { code }
    // (the A/V control object's error) for a manifest it does not play.
    function read(mpd, url, environment) {
        var resolve = environment.resolve;
        if (!mpd || mpd.localName !== 'MPD')
            throw { code: CONTENT_CORRUPT };
        if (mpd.getAttribute('type') === 'dynamic')
            throw { code: FORMAT_NOT_SUPPORTED };
        var period = child(mpd, 'Period');
        var total = seconds(mpd.getAttribute('mediaPresentationDuration'));
        var periodSeconds = seconds(period && period.getAttribute('duration')) || total;
        if (!period || !(periodSeconds > 0))
            throw { code: CONTENT_CORRUPT };
        environment.duration(total || periodSeconds);
        var base = baseOf(baseOf(url, mpd, resolve), period, resolve);
        var kinds = {};
        var chosen = 0;
        children(period, 'AdaptationSet').forEach(function (set) {
            children(set, 'Representation').sort(function (a, b) {
                return Number(a.getAttribute('bandwidth')) - Number(b.getAttribute('bandwidth'));
            }).some(function (representation) {
                var chain = [representation, set, period];
                var mime = mimeOf(chain, environment.supports);
                var kind = mime.split('/')[0];
                if (!mime || kinds[kind])
                    return false;
                environment.track(mime, segments(chain, baseOf(baseOf(base, set, resolve), representation, resolve), periodSeconds, resolve));
                ++chosen;
                return (kinds[kind] = true);
            });
        });
        if (chosen === 0)
            throw { code: FORMAT_NOT_SUPPORTED };
    }

    tv.dashManifest = { MAX_SEGMENTS: MAX_SEGMENTS, seconds: seconds, fill: fill, read: read };
})
