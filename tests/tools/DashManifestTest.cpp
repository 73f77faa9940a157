// The DASH player's manifest reading (dash-manifest.js), run by JavaScriptCore without a page:
// manifests are built of plain element-like objects, URLs resolve through GLib, and the
// engine plays MP4 only.

#include <gtest/gtest.h>

#include <jsc/jsc.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

const char* const FIXTURE = R"js(
function E(name, attributes, content) {
    var own = attributes || {};
    var has = function (n) { return Object.prototype.hasOwnProperty.call(own, n); };
    return { localName: name, children: Array.isArray(content) ? content : [],
             textContent: typeof content === 'string' ? content : '',
             getAttribute: function (n) { return has(n) ? String(own[n]) : null; }, hasAttribute: has };
}
var PLAYABLE = ['video/mp4', 'audio/mp4', 'video/mp4; codecs="avc1.64001f"', 'audio/mp4; codecs="mp4a.40.2"'];
var supports = function (mime) { return PLAYABLE.indexOf(mime) >= 0; };
var MANIFEST = 'http://cdn.test/show/manifest.mpd';
function outcome(read) {
    try {
        return read();
    } catch (e) {
        return e && e.code !== undefined ? 'code ' + e.code : 'error ' + e;
    }
}
// What the player is told, a line each: the duration, then each track's type and offset and its segments.
function read(mpd) {
    return outcome(function () {
        var lines = [];
        tv.dashManifest.read(mpd, MANIFEST, {
            resolve: resolveUrl,
            supports: supports,
            duration: function (seconds) { lines.push('duration ' + seconds); },
            track: function (mime, segments) {
                lines.push(mime + ' offset ' + segments.offset);
                segments.forEach(function (s) { lines.push(s.url + ' ' + s.start); });
            }
        });
        return lines.join('\n');
    });
}
// How many segments the first track has, URLs resolved cheaply.
function count(mpd) {
    return outcome(function () {
        var counted = [];
        tv.dashManifest.read(mpd, MANIFEST, {
            resolve: function (relative, base) { return base + relative; },
            supports: supports,
            duration: function () {},
            track: function (mime, segments) { counted.push(segments.length); }
        });
        return String(counted[0]);
    });
}
// A one-period manifest of one adaptation set of MP4 video.
function video(duration, content) {
    return E('MPD', { mediaPresentationDuration: duration },
             [E('Period', {}, [E('AdaptationSet', { mimeType: 'video/mp4' }, content)])]);
}
function many(n, make) {
    var out = [];
    for (var i = 0; i < n; ++i)
        out.push(make(i));
    return out;
}
)js";

// What the player gives the reader for URLs; RFC 3986 resolution serves as well as the page's.
char* resolveUrl(const char* relative, const char* base, gpointer)
{
    GError* error = nullptr;
    char* url = relative && base ? g_uri_resolve_relative(base, relative, G_URI_FLAGS_NONE, &error) : nullptr;
    if (!url)
        jsc_context_throw(jsc_context_get_current(), error ? error->message : "no URL");
    g_clear_error(&error);
    return url;
}

class DashManifestTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        context = jsc_context_new();
        char* source = nullptr;
        ASSERT_TRUE(g_file_get_contents(SCRIPT_DIR "/dash-manifest.js", &source, nullptr, nullptr));
        // As the page extension runs it: a function expression called with the bridge object.
        JSCValue* script = jsc_context_evaluate_with_source_uri(context, source, -1, "dash-manifest.js", 1);
        g_free(source);
        JSCValue* tv = jsc_value_new_object(context, nullptr, nullptr);
        ASSERT_TRUE(jsc_value_is_function(script)) << exception();
        // The page shares the global object: the reader is reached through tv only.
        const std::string globals = evaluate("Object.getOwnPropertyNames(this).sort().join()");
        g_object_unref(jsc_value_function_call(script, JSC_TYPE_VALUE, tv, G_TYPE_NONE));
        ASSERT_EQ(exception(), "");
        EXPECT_EQ(evaluate("Object.getOwnPropertyNames(this).sort().join()"), globals);
        jsc_context_set_value(context, "tv", tv);
        g_object_unref(tv);
        g_object_unref(script);
        JSCValue* resolver = jsc_value_new_function(context, "resolveUrl", G_CALLBACK(resolveUrl), nullptr, nullptr,
                                                    G_TYPE_STRING, 2, G_TYPE_STRING, G_TYPE_STRING);
        jsc_context_set_value(context, "resolveUrl", resolver);
        g_object_unref(resolver);
        evaluate(FIXTURE);
    }
    void TearDown() override { g_object_unref(context); }

    std::string exception()
    {
        JSCException* thrown = jsc_context_get_exception(context);
        char* report = thrown ? jsc_exception_report(thrown) : nullptr;
        const std::string message = report ? report : "";
        g_free(report);
        jsc_context_clear_exception(context);
        return message;
    }

    // What the code gives, as a string; an exception fails the test.
    std::string evaluate(const std::string& code)
    {
        JSCValue* value = jsc_context_evaluate(context, code.c_str(), -1);
        char* text = jsc_value_to_string(value);
        std::string result = text ? text : "";
        g_free(text);
        g_object_unref(value);
        const std::string thrown = exception();
        EXPECT_EQ(thrown, "") << code;
        return result;
    }

    JSCContext* context = nullptr;
};

std::string lines(const std::vector<std::string>& list)
{
    std::ostringstream out;
    for (size_t i = 0; i < list.size(); ++i)
        out << (i ? "\n" : "") << list[i];
    return out.str();
}

TEST_F(DashManifestTest, Durations)
{
    const struct {
        const char* text;
        const char* seconds;
    } cases[] = {
        {"'PT1H2M3.5S'", "3723.5"}, {"'P1D'", "86400"},      {"'P1DT1S'", "86401"},  {"'PT90M'", "5400"},
        {"'PT0.25S'", "0.25"},      {"'P1Y2M'", "36720000"}, {"'PT1H2M3.5'", "NaN"}, {"'1:02:03'", "NaN"},
        {"'pt5s'", "NaN"},          {"' PT5S'", "NaN"},      {"'-PT5S'", "NaN"},     {"'PT1.5H'", "NaN"},
        {"'P1W'", "NaN"},           {"''", "NaN"},           {"null", "NaN"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(evaluate(std::string("String(tv.dashManifest.seconds(") + c.text + "))"), c.seconds) << c.text;
}

TEST_F(DashManifestTest, Templates)
{
    const struct {
        const char* templateText;
        int number;
        long time;
        const char* url;
    } cases[] = {
        {"$RepresentationID$/$Number$.m4s", 7, 0, "v1/7.m4s"},
        {"$Number%05d$.m4s", 42, 0, "00042.m4s"},
        {"$Number%02d$", 12345, 0, "12345"},
        {"$Time$.m4s", 1, 180000, "180000.m4s"},
        {"t$Time%010d$", 1, 180000, "t0000180000"},
        {"$Bandwidth$/$RepresentationID$", 1, 0, "500000/v1"},
        {"a$$b$$", 1, 0, "a$b$"},
        {"$Number%020d$", 7, 0, "0000000000000007"},  // at most 16 digits
        {"$Unknown$-$Number", 7, 0, "$Unknown$-$Number"},
    };
    for (const auto& c : cases) {
        const std::string call = std::string("tv.dashManifest.fill('") + c.templateText +
                                 "', E('Representation', { id: 'v1', bandwidth: 500000 }), " +
                                 std::to_string(c.number) + ", " + std::to_string(c.time) + ")";
        EXPECT_EQ(evaluate(call), c.url) << c.templateText;
    }
}

struct ManifestCase {
    const char* what;
    const char* manifest;  // JavaScript that makes the MPD element
    std::vector<std::string> read;
};

const ManifestCase MANIFESTS[] = {
    {"a template by number, from its start number",
     R"js(video('PT7S', [E('SegmentTemplate', { initialization: '$RepresentationID$/init.mp4', media: '$RepresentationID$/$Number%03d$.m4s',
                                               duration: 2000, timescale: 1000, startNumber: 5 }),
                         E('Representation', { id: 'v1', bandwidth: 500000 })]))js",
     {"duration 7", "video/mp4 offset 0", "http://cdn.test/show/v1/init.mp4 -1", "http://cdn.test/show/v1/005.m4s 0",
      "http://cdn.test/show/v1/006.m4s 2", "http://cdn.test/show/v1/007.m4s 4", "http://cdn.test/show/v1/008.m4s 6"}},
    {"a template by number with media times moved by the presentation time offset",
     R"js(video('PT4S', [E('SegmentTemplate', { media: '$Number$-$Time$.m4s', duration: 180000, timescale: 90000,
                                               presentationTimeOffset: 900000 }),
                         E('Representation', { id: 'v1' })]))js",
     {"duration 4", "video/mp4 offset -10", "http://cdn.test/show/1-900000.m4s 0",
      "http://cdn.test/show/2-1080000.m4s 2"}},
    {"the period's own duration bounds the segments",
     R"js(E('MPD', { mediaPresentationDuration: 'PT1M' }, [E('Period', { duration: 'PT3S' }, [
             E('AdaptationSet', { mimeType: 'video/mp4' }, [E('SegmentTemplate', { media: '$Number$.m4s', duration: 2 }),
                                                            E('Representation', {})])])]))js",
     {"duration 60", "video/mp4 offset 0", "http://cdn.test/show/1.m4s 0", "http://cdn.test/show/2.m4s 2"}},
    {"a timeline: t, d, r, an empty entry and a gap",
     R"js(video('PT20S', [E('SegmentTemplate', { media: 'seg-$Time$.m4s', initialization: 'init.mp4', timescale: 10 }, [
                              E('SegmentTimeline', {}, [E('S', { t: 100, d: 20, r: 2 }), E('S', { d: 10 }), E('S', { d: 0 }),
                                                        E('S', { t: 180, d: 20 })])]),
                          E('Representation', {})]))js",
     {"duration 20", "video/mp4 offset 0", "http://cdn.test/show/init.mp4 -1", "http://cdn.test/show/seg-100.m4s 10",
      "http://cdn.test/show/seg-120.m4s 12", "http://cdn.test/show/seg-140.m4s 14",
      "http://cdn.test/show/seg-160.m4s 16", "http://cdn.test/show/seg-180.m4s 18"}},
    {"a timeline repeated to the period's end by r=-1",
     R"js(video('PT10S', [E('SegmentTemplate', { media: '$Number$.m4s', startNumber: 0 }, [
                              E('SegmentTimeline', {}, [E('S', { t: 0, d: 4 }), E('S', { d: 2, r: -1 })])]),
                          E('Representation', {})]))js",
     {"duration 10", "video/mp4 offset 0", "http://cdn.test/show/0.m4s 0", "http://cdn.test/show/1.m4s 4",
      "http://cdn.test/show/2.m4s 6", "http://cdn.test/show/3.m4s 8"}},
    {"a segment list under the representation's BaseURL",
     R"js(video('PT6S', [E('Representation', {}, [
                             E('BaseURL', {}, ' parts/ '),
                             E('SegmentList', { duration: 4, timescale: 2 }, [
                                 E('Initialization', { sourceURL: 'init.mp4' }), E('SegmentURL', { media: 'a.m4s' }),
                                 E('SegmentURL', { media: '/abs/b.m4s' }), E('SegmentURL', { media: 'http://other.test/c.m4s' })])])]))js",
     {"duration 6", "video/mp4 offset 0", "http://cdn.test/show/parts/init.mp4 -1",
      "http://cdn.test/show/parts/a.m4s 0", "http://cdn.test/abs/b.m4s 2", "http://other.test/c.m4s 4"}},
    {"one file, its BaseURL resolved through every level",
     R"js(E('MPD', { mediaPresentationDuration: 'PT30S' }, [E('BaseURL', {}, 'http://media.test/root/'), E('Period', {}, [
             E('BaseURL', {}, 'p1/'), E('AdaptationSet', { mimeType: 'video/mp4' }, [
                 E('BaseURL', {}, 'v/'),
                 E('Representation', {}, [E('BaseURL', {}, 'movie.mp4'), E('SegmentBase', { indexRange: '0-99' })])])])]))js",
     {"duration 30", "video/mp4 offset 0", "http://media.test/root/p1/v/movie.mp4 0"}},
    {"the leanest playable representation of each kind, and one set of a kind",
     R"js(E('MPD', { mediaPresentationDuration: 'PT5S' }, [E('Period', {}, [
             E('SegmentTemplate', { media: '$RepresentationID$/$Number$.m4s', duration: 5 }),
             E('AdaptationSet', { mimeType: 'video/webm' }, [E('Representation', { id: 'webm', bandwidth: 1 })]),
             E('AdaptationSet', { mimeType: 'video/mp4', codecs: 'avc1.64001f' }, [
                 E('Representation', { id: 'hi', bandwidth: 3000000 }), E('Representation', { id: 'lo', bandwidth: 800000 }),
                 E('Representation', { id: 'odd', bandwidth: 400000, mimeType: 'video/webm' })]),
             E('AdaptationSet', { mimeType: 'video/mp4' }, [E('Representation', { id: 'second', bandwidth: 1 })]),
             E('AdaptationSet', { mimeType: 'audio/mp4', codecs: 'mp4a.40.5' }, [
                 E('Representation', { id: 'en', bandwidth: 128000 }), E('Representation', { id: 'en-lo', bandwidth: 64000 })])])]))js",
     {"duration 5", "video/mp4; codecs=\"avc1.64001f\" offset 0", "http://cdn.test/show/lo/1.m4s 0",
      // codecs the engine does not know as written: the type alone
      "audio/mp4 offset 0", "http://cdn.test/show/en-lo/1.m4s 0"}},
    // Manifests it does not play, with the A/V control object's error.
    {"not an MPD", "E('html', {}, [])", {"code 4"}},
    {"no document", "null", {"code 4"}},
    {"a live manifest",
     "E('MPD', { type: 'dynamic', mediaPresentationDuration: 'PT5S' }, [E('Period', {}, [])])",
     {"code 0"}},
    {"no period", "E('MPD', { mediaPresentationDuration: 'PT5S' }, [])", {"code 4"}},
    {"no duration",
     "E('MPD', {}, [E('Period', {}, [E('AdaptationSet', { mimeType: 'video/mp4' }, [E('Representation', {})])])])",
     {"code 4"}},
    {"nothing the engine plays",
     "E('MPD', { mediaPresentationDuration: 'PT5S' }, [E('Period', {}, [E('AdaptationSet', { mimeType: 'video/webm' }, "
     "[E('Representation', {})])])])",
     {"code 0"}},
    {"a repetition that starts after the period",
     R"js(video('PT10S', [E('SegmentTemplate', { media: '$Number$.m4s' }, [E('SegmentTimeline', {}, [E('S', { t: 20, d: 2, r: -1 })])]),
                          E('Representation', {})]))js",
     {"code 4"}},
};

TEST_F(DashManifestTest, Manifests)
{
    for (const ManifestCase& c : MANIFESTS)
        EXPECT_EQ(evaluate(std::string("read(") + c.manifest + ")"), lines(c.read)) << c.what;
}

// A manifest that claims more segments than the bound is refused before they are listed.
TEST_F(DashManifestTest, SegmentBound)
{
    ASSERT_EQ(evaluate("String(tv.dashManifest.MAX_SEGMENTS)"), "100000");
    const struct {
        const char* manifest;
        const char* segments;
    } cases[] = {
        {"video('PT100000S', [E('SegmentTemplate', { media: '$Number$', duration: 1 }), E('Representation', {})])",
         "100000"},
        {"video('PT100001S', [E('SegmentTemplate', { media: '$Number$', duration: 1 }), E('Representation', {})])",
         "code 4"},
        {"video('P1000000Y', [E('SegmentTemplate', { media: '$Number$', duration: 1 }), E('Representation', {})])",
         "code 4"},
        {"video('PT1S', [E('SegmentTemplate', { media: '$Number$', duration: 1, timescale: 1e9 }), E('Representation', {})])",
         "code 4"},
        {"video('PT5S', [E('SegmentTemplate', { media: '$Time$' }, [E('SegmentTimeline', {}, [E('S', { d: 1, r: 99999 })])]), "
         "E('Representation', {})])",
         "100000"},
        {"video('PT5S', [E('SegmentTemplate', { media: '$Time$' }, [E('SegmentTimeline', {}, [E('S', { d: 1, r: 100000 })])]), "
         "E('Representation', {})])",
         "code 4"},
        {"video('PT5S', [E('SegmentTemplate', { media: '$Time$' }, [E('SegmentTimeline', {}, "
         "[E('S', { d: 1, r: 50000 }), E('S', { d: 1, r: 50000 })])]), E('Representation', {})])",
         "code 4"},
        {"video('PT5S', [E('SegmentTemplate', { media: '$Time$' }, [E('SegmentTimeline', {}, [E('S', { d: 1, r: 1e15 })])]), "
         "E('Representation', {})])",
         "code 4"},
        {"video('P1000000Y', [E('SegmentTemplate', { media: '$Time$' }, [E('SegmentTimeline', {}, [E('S', { d: 1, r: -1 })])]), "
         "E('Representation', {})])",
         "code 4"},
        {"video('PT5S', [E('SegmentList', {}, many(100000, function (i) { return E('SegmentURL', { media: i + '.m4s' }); })), "
         "E('Representation', {})])",
         "100000"},
        {"video('PT5S', [E('SegmentList', {}, many(100001, function (i) { return E('SegmentURL', { media: i + '.m4s' }); })), "
         "E('Representation', {})])",
         "code 4"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(evaluate(std::string("count(") + c.manifest + ")"), c.segments) << c.manifest;
}

}  // namespace
