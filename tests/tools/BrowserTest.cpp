// hbbtv-browser with WebKit, as an integrator runs it: on a display (the test command runs
// under xvfb-run), on captures made from the sample's description, with broadband servers
// on 127.0.0.1 that this test runs, one of them failing as real servers do. The tests run in
// a network of their own, where only loopback exists: nothing they do reaches another
// address, and a name does not resolve, as on a TV without a network.

#include <cairo.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <libsoup/soup.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <mutex>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Serves directories under path prefixes; everything else is a 404, but for a hop that
// redirects to secret.txt. Keeps the paths asked for, with their queries.
class LocalServer {
public:
    explicit LocalServer(std::map<std::string, std::string> roots) : roots(std::move(roots))
    {
        std::mutex started;
        started.lock();
        thread = std::thread([this, &started] {
            context = g_main_context_new();
            g_main_context_push_thread_default(context);
            server = soup_server_new(nullptr, nullptr);
            soup_server_add_handler(server, nullptr, serve, this, nullptr);
            soup_server_listen_local(server, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr);
            GSList* uris = soup_server_get_uris(server);
            port = g_uri_get_port(static_cast<GUri*>(uris->data));
            g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
            loop = g_main_loop_new(context, FALSE);
            started.unlock();
            g_main_loop_run(loop);
            g_object_unref(server);
            g_main_loop_unref(loop);
            g_main_context_pop_thread_default(context);
            g_main_context_unref(context);
        });
        started.lock();
        started.unlock();
    }
    ~LocalServer()
    {
        g_main_context_invoke(
            context,
            [](gpointer l) {
                g_main_loop_quit(static_cast<GMainLoop*>(l));
                return G_SOURCE_REMOVE;
            },
            loop);
        thread.join();
    }

    std::string base() const { return "http://127.0.0.1:" + std::to_string(port) + "/"; }
    bool asked(const std::string& path)
    {
        std::lock_guard<std::mutex> lock(mutex);
        for (const std::string& p : paths)
            if (p.compare(0, path.size(), path) == 0)
                return true;
        return false;
    }

    // The paths asked for that hold the text, one a line.
    std::string pathsWith(const std::string& text)
    {
        std::lock_guard<std::mutex> lock(mutex);
        std::string found;
        for (const std::string& p : paths)
            if (p.find(text) != std::string::npos)
                found += p + "\n";
        return found;
    }

private:
    static void serve(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer data)
    {
        auto* self = static_cast<LocalServer*>(data);
        const std::string asked = path;
        const char* query = g_uri_get_query(soup_server_message_get_uri(message));
        {
            std::lock_guard<std::mutex> lock(self->mutex);
            self->paths.push_back(asked + (query ? std::string("?") + query : ""));
        }
        if (asked == "/probe/hop") {
            soup_server_message_set_redirect(message, 302, "secret.txt?redirect");
            return;
        }
        for (const auto& root : self->roots) {
            if (asked.compare(0, root.first.size(), root.first) != 0)
                continue;
            const std::string file = root.second + "/" + asked.substr(root.first.size());
            if (access(file.c_str(), R_OK) != 0)
                break;
            // An XML AIT names the server it came from.
            const std::string body = std::regex_replace(readFile(file), std::regex("@BASE@"), self->base());
            soup_server_message_set_status(message, 200, nullptr);
            soup_server_message_set_response(message, mimeType(file), SOUP_MEMORY_COPY, body.data(), body.size());
            return;
        }
        soup_server_message_set_status(message, 404, nullptr);
    }
    static const char* mimeType(const std::string& file)
    {
        static const std::pair<const char*, const char*> types[] = {
            {".html", "application/vnd.hbbtv.xhtml+xml; charset=UTF-8"},
            {".htm", "text/html"},
            {".js", "application/javascript"},
            {".css", "text/css"},
            {".aitx", "application/vnd.dvb.ait+xml"},
            {".xml", "application/vnd.dvb.streamevent+xml"},
            {".mp4", "video/mp4"},
            {".ts", "video/mp2t"}};
        for (const auto& type : types)
            if (file.size() > strlen(type.first) &&
                file.compare(file.size() - strlen(type.first), std::string::npos, type.first) == 0)
                return type.second;
        return "text/plain";
    }

    std::map<std::string, std::string> roots;
    std::thread thread;
    GMainContext* context = nullptr;
    GMainLoop* loop = nullptr;
    SoupServer* server = nullptr;
    unsigned port = 0;
    std::mutex mutex;
    std::vector<std::string> paths;
};

class BrowserTest : public testing::Test {
protected:
    BrowserTest()
        : dir(temporaryDirectory()), server({{"/app/", SAMPLE_DIR "/carousel"},
                                             {"/catalogue/", SAMPLE_DIR "/catalogue"},
                                             {"/news/", SAMPLE_DIR "/news"},
                                             {"/probe/", PAGES_DIR},
                                             {"/media/", dir}})
    {
    }
    static std::string temporaryDirectory()
    {
        char pattern[] = "/tmp/browser-test-XXXXXX";
        return mkdtemp(pattern);
    }
    ~BrowserTest() override { std::system(("rm -rf " + dir).c_str()); }

    // The sample's broadcast with its broadband transports moved to the local server's paths.
    std::string capture(const std::string& appPath, const std::string& location = "index.html")
    {
        return captureAt(server.base() + appPath, location);
    }
    // The same, with the first application's broadband transport at appBase.
    std::string captureAt(const std::string& appBase, const std::string& location = "index.html")
    {
        return make(describe(appBase, location));
    }
    // The sample's description with those transports.
    std::string describe(const std::string& appBase, const std::string& location = "index.html")
    {
        std::string desc = readFile(SAMPLE_DIR "/sample.desc");
        desc = std::regex_replace(desc, std::regex("http://sample.example/app/"), appBase);
        desc = std::regex_replace(desc, std::regex("location index.html\n    boundary"),
                                  "location " + location + "\n    boundary");
        return std::regex_replace(desc, std::regex("http://sample.example/"), server.base());
    }
    // The capture of a description of the sample's kind.
    std::string make(const std::string& desc)
    {
        std::ofstream(dir + "/sample.desc") << desc;
        symlink(SAMPLE_DIR "/carousel", (dir + "/carousel").c_str());
        const std::string ts = dir + "/sample.ts";
        EXPECT_EQ(std::system((MAKE_SAMPLE " " + dir + "/sample.desc " + ts).c_str()), 0);
        return ts;
    }

    // Runs the browser with the arguments, and variables of its environment (NAME=VALUE ...).
    std::string browse(const std::string& arguments, const std::string& environment = "")
    {
        std::string output;
        FILE* pipe = popen((environment + " " HBBTV_BROWSER " " + arguments + " 2>&1").c_str(), "r");
        char buffer[4096];
        while (size_t n = fread(buffer, 1, sizeof buffer, pipe))
            output.append(buffer, n);
        EXPECT_EQ(pclose(pipe), 0) << output;
        return output;
    }

    std::string dir;  // the test's own files, served under /media/
    LocalServer server;
};

// The browser tests' own network: a user and network namespace whose only interface is
// loopback, entered before any thread starts. False where the system allows none.
bool isolated = false;

bool writeTo(const char* path, const std::string& text)
{
    const int fd = open(path, O_WRONLY);
    const bool written = fd >= 0 && write(fd, text.data(), text.size()) == ssize_t(text.size());
    if (fd >= 0)
        close(fd);
    return written;
}

bool isolateNetwork()
{
    const uid_t uid = getuid();
    const gid_t gid = getgid();
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return false;
    writeTo("/proc/self/setgroups", "deny");
    if (!writeTo("/proc/self/uid_map", std::to_string(uid) + " " + std::to_string(uid) + " 1") ||
        !writeTo("/proc/self/gid_map", std::to_string(gid) + " " + std::to_string(gid) + " 1"))
        return false;
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    struct ifreq loopback = {};
    strcpy(loopback.ifr_name, "lo");
    const bool up = fd >= 0 && ioctl(fd, SIOCGIFFLAGS, &loopback) == 0 && (loopback.ifr_flags |= IFF_UP) &&
                    ioctl(fd, SIOCSIFFLAGS, &loopback) == 0;
    if (fd >= 0)
        close(fd);
    return up;
}

// A broadband server that fails as real ones do (fault_server.py): its paths, its TLS port
// with a self-signed certificate, and a port where connections are refused. It serves the
// test's directory and ends when the test does.
class FaultServer {
public:
    explicit FaultServer(const std::string& root)
    {
        const char* argv[] = {"python3",
                              PAGES_DIR "/fault_server.py",
                              root.c_str(),
                              PAGES_DIR "/fault-cert.pem",
                              PAGES_DIR "/fault-key.pem",
                              nullptr};
        int out = -1;
        if (!g_spawn_async_with_pipes(nullptr, const_cast<char**>(argv), nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr,
                                      &pid, &in, &out, nullptr, nullptr))
            return;
        FILE* ports = fdopen(out, "r");
        char line[256] = "";
        if (!fgets(line, sizeof line, ports))
            line[0] = 0;
        fclose(ports);
        std::smatch found;
        const std::string text = line;
        for (auto* port : {&http, &https, &refused})
            if (std::regex_search(text, found,
                                  std::regex("\"" +
                                             std::string(port == &http    ? "http"
                                                         : port == &https ? "https"
                                                                          : "refused") +
                                             "\": ([0-9]+)")))
                *port = found[1];
    }
    ~FaultServer()
    {
        if (in >= 0)
            close(in);
        if (pid > 0)
            waitpid(pid, nullptr, 0);
    }
    bool isRunning() const { return !http.empty(); }
    std::string url(const std::string& path) const { return "http://127.0.0.1:" + http + "/" + path; }
    std::string secureUrl(const std::string& path) const { return "https://127.0.0.1:" + https + "/" + path; }
    std::string refusedUrl(const std::string& path) const { return "http://127.0.0.1:" + refused + "/" + path; }

private:
    GPid pid = 0;
    int in = -1;
    std::string http, https, refused;
};

// A PNG's pixels as 0xRRGGBB; white where the file did not load.
class Picture {
public:
    explicit Picture(const std::string& png) : image(cairo_image_surface_create_from_png(png.c_str())) {}
    ~Picture() { cairo_surface_destroy(image); }
    uint32_t at(int x, int y) const
    {
        if (cairo_surface_status(image) != CAIRO_STATUS_SUCCESS)
            return 0xFFFFFFFF;
        const unsigned char* row = cairo_image_surface_get_data(image) + y * cairo_image_surface_get_stride(image);
        return reinterpret_cast<const uint32_t*>(row)[x] & 0xFFFFFF;
    }

private:
    cairo_surface_t* image;
};

uint32_t pixel(const std::string& png, int x, int y)
{
    return Picture(png).at(x, y);
}

// GStreamer's test pictures and tone, encoded as a broadcaster would (H.264 and AAC), in an
// MP4 file or a transport stream: a moving ball, or colour bars.
bool makeMedia(const std::string& file, const char* pattern, bool transportStream)
{
    const std::string command =
        std::string("gst-launch-1.0 -q -e videotestsrc num-buffers=250 pattern=") + pattern +
        " ! video/x-raw,width=320,height=180,framerate=25/1,format=I420"
        " ! x264enc bitrate=300 speed-preset=ultrafast key-int-max=25 ! h264parse ! queue ! " +
        (transportStream ? "mpegtsmux" : "mp4mux faststart=true") + " name=mux ! filesink location=" + file +
        " audiotestsrc num-buffers=431 ! audioconvert ! audio/x-raw,rate=44100,channels=1 ! avenc_aac ! aacparse"
        " ! queue ! mux. > /dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

// Ten seconds of MPEG-2 video with MPEG-1 layer II audio in a transport stream, as older
// broadcasters' clips are; and of MP3 audio.
bool makeMpeg2Media(const std::string& file)
{
    return std::system(("gst-launch-1.0 -q -e videotestsrc num-buffers=250 pattern=ball"
                        " ! video/x-raw,width=352,height=288,framerate=25/1,format=I420 ! mpeg2enc format=3"
                        " ! mpegvideoparse ! queue ! mpegtsmux name=mux ! filesink location=" +
                        file +
                        " audiotestsrc num-buffers=431 ! audioconvert ! audio/x-raw,rate=44100,channels=1"
                        " ! avenc_mp2 ! mpegaudioparse ! queue ! mux. > /dev/null 2>&1")
                           .c_str()) == 0;
}

// Ten seconds of H.264 with two AAC audio streams, German and English, their languages in the
// muxer's PMT.
bool makeTwoLanguageMedia(const std::string& file)
{
    std::string command = "gst-launch-1.0 -q -e videotestsrc num-buffers=250 pattern=smpte"
                          " ! video/x-raw,width=320,height=180,framerate=25/1,format=I420"
                          " ! x264enc bitrate=300 speed-preset=ultrafast key-int-max=25 ! h264parse ! queue"
                          " ! mpegtsmux name=mux ! filesink location=" +
                          file;
    for (const char* language : {"deu", "eng"})
        command += std::string(" audiotestsrc num-buffers=431 ! audioconvert ! audio/x-raw,rate=44100,channels=2"
                               " ! taginject tags=language-code=") +
                   language + " ! avenc_aac ! aacparse ! queue ! mux.";
    return std::system((command + " > /dev/null 2>&1").c_str()) == 0;
}

bool makeMp3(const std::string& file)
{
    return std::system(("gst-launch-1.0 -q -e audiotestsrc num-buffers=431 ! audioconvert ! lamemp3enc"
                        " ! id3v2mux ! filesink location=" +
                        file + " > /dev/null 2>&1")
                           .c_str()) == 0;
}

// A capture whose picture (the elementary streams on PIDs 0x0110 and up) carries nothing a
// decoder can read: every payload byte overwritten, the packets' own headers kept.
void spoilPicture(const std::string& path)
{
    std::string ts = readFile(path);
    for (size_t at = 0; at + 188 <= ts.size(); at += 188) {
        const unsigned pid = (unsigned(uint8_t(ts[at + 1]) & 0x1F) << 8) | uint8_t(ts[at + 2]);
        if (pid < 0x0110 || pid > 0x011F)
            continue;
        const size_t payload = 4 + ((ts[at + 3] & 0x20) ? 1 + uint8_t(ts[at + 4]) : 0);
        for (size_t i = at + payload; i < at + 188; ++i)
            ts[i] = char(0xA5 ^ (i * 131));
    }
    std::ofstream(path, std::ios::binary) << ts;
}

// The HTTP status of a GET from this process; 0 when no answer came.
unsigned statusOf(const std::string& url)
{
    SoupSession* session = soup_session_new();
    SoupMessage* message = soup_message_new("GET", url.c_str());
    GBytes* body = message ? soup_session_send_and_read(session, message, nullptr, nullptr) : nullptr;
    const unsigned status = message ? soup_message_get_status(message) : 0;
    if (body)
        g_bytes_unref(body);
    if (message)
        g_object_unref(message);
    g_object_unref(session);
    return status;
}

// dir/av-capture.ts: one service whose picture is colour bars (made with GStreamer's test
// sources), its AUTOSTART application the probe page served from base.
bool barsCapture(const std::string& dir, const std::string& base, const char* page)
{
    if (!makeMedia(dir + "/av.ts", "smpte", true))
        return false;
    std::ofstream(dir + "/av.desc")
        << "transport_stream 0x0001 network 0x0001\n"
           "service 0x0001 \"Bars TV\" provider \"Sample Broadcaster\" pmt 0x0100 ait 0x0101\n"
           "ait version 1\nsection\n"
           "  application 0x10 0x0001 AUTOSTART priority 5 profile 0x0000 1.1.1\n"
           "    transport 1 http "
        << base << "probe/\n    location " << page << "\nav av.ts 0x0110\n";
    return std::system((MAKE_SAMPLE " " + dir + "/av.desc " + dir + "/av-capture.ts").c_str()) == 0;
}

// How many of the pixels of a rectangle (every fourth in each direction) differ between two PNGs.
int changedPixels(const std::string& first, const std::string& second, int x, int y, int width, int height)
{
    const Picture before(first), after(second);
    int changed = 0;
    for (int row = y; row < y + height; row += 4)
        for (int column = x; column < x + width; column += 4)
            changed += before.at(column, row) != after.at(column, row);
    return changed;
}

// The broadcast's stand-in: a dark blue frame.
bool isStandIn(uint32_t rgb)
{
    return rgb != 0 && (rgb & 0xFF) > (rgb >> 16) && (rgb & 0xFF) < 0x40;
}

bool isRed(uint32_t rgb)
{
    return (rgb >> 16) > 0xB0 && ((rgb >> 8) & 0xFF) < 0x40 && (rgb & 0xFF) < 0x40;
}

// Broadband answers 404: the AUTOSTART application fails over to its carousel page, which
// draws the red-button banner.
TEST_F(BrowserTest, BroadbandNotFoundFailsOverToTheCarouselWhichDrawsTheBanner)
{
    const std::string shot = dir + "/shot.png";
    const std::string out = browse(capture("missing/") + " --exit-after 120 --screenshot " + shot + "@60" +
                                   " --eval \"document.getElementById('banner').className + '|' +"
                                   " document.getElementById('origin').textContent\"@60");
    EXPECT_TRUE(server.asked("/missing/index.html"));
    EXPECT_NE(out.find("HTTP 404: " + server.base() + "missing/index.html"), std::string::npos) << out;
    EXPECT_NE(out.find("loaded: dvb://1.1.1.5/index.html"), std::string::npos) << out;
    EXPECT_NE(out.find("\"banner|Served from the object carousel.\""), std::string::npos) << out;
    EXPECT_NE(out.find("first paint in browser window"), std::string::npos) << out;
    EXPECT_TRUE(isRed(pixel(shot, 742, 644))) << std::hex << pixel(shot, 742, 644);  // the banner's red edge
    EXPECT_FALSE(isRed(pixel(shot, 742, 400))) << "above the banner: the broadcast shows through";
}

// Over broadband: RED opens the menu the page has asked for, and ENTER on the catalogue
// entry starts the second application from the current AIT, which shows itself.
TEST_F(BrowserTest, SampleMenuLaunchesTheSecondApplication)
{
    const std::string shot = dir + "/catalogue.png";
    // The keys come late enough for a loaded machine to have shown the page.
    const std::string out = browse(capture("app/") + " --exit-after 200 --key RED@100 --key DOWN@110 --key ENTER@120" +
                                   " --eval \"document.getElementById('origin').textContent\"@50" +
                                   " --eval document.title@180 --screenshot " + shot + "@180");
    EXPECT_NE(out.find("\"Served over broadband.\""), std::string::npos) << out;
    EXPECT_NE(out.find("key RED delivered to the application"), std::string::npos) << out;
    EXPECT_NE(out.find(",\"dvb://current.ait/10.2\",false]: "), std::string::npos) << out;
    EXPECT_NE(out.find("loaded: " + server.base() + "catalogue/index.html"), std::string::npos) << out;
    EXPECT_NE(out.find("eval document.title: \"Sample Catalogue\""), std::string::npos) << out;
    EXPECT_TRUE(isRed(pixel(shot, 100, 130))) << "the catalogue's selected entry";
}

// A broadcast-related page gets no key until it asks; the platform refuses one of its
// requests, which never reaches the server; its low-memory report reaches the page;
// window.close() ends the application.
TEST_F(BrowserTest, KeysRequestsAndCloseOfABroadcastPage)
{
    std::ofstream(dir + "/low-memory.script") << "tick 110\nlow-memory\n";
    const std::string out =
        browse(capture("probe/", "probe.html") + " --refuse '*secret*' --exit-after 200" + " --script " + dir +
               "/low-memory.script" + " --key RED@40 --eval 'takeRed()@60' --key RED@90 --key YELLOW@91" +
               " --eval \"request('allowed.txt'), request('secret.txt')\"@100" +
               " --eval 'report()@130' --eval 'window.close()@150'");
    EXPECT_NE(out.find("key RED stays with the TV"), std::string::npos) << out;
    EXPECT_NE(out.find("key RED delivered to the application"), std::string::npos) << out;
    EXPECT_NE(out.find("key YELLOW stays with the TV"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"received\":[403])"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"allowed.txt\":\"loaded 200\")"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"secret.txt\":\"refused\")"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"secret.txt fetch\":\"refused\")"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"lowMemory\":true)"), std::string::npos) << out;
    EXPECT_TRUE(server.asked("/probe/allowed.txt"));
    EXPECT_FALSE(server.asked("/probe/secret.txt"));
    EXPECT_NE(out.find("closes its window"), std::string::npos) << out;
    EXPECT_NE(out.find("stopped: 0x10.0x1 " + server.base() + "probe/probe.html"), std::string::npos) << out;
}

// A page loads an XML AIT, as createApplication of an .aitx URL does: the core reads it and
// hands it over, and the library starts the application it signals. The page's user agent
// carries the library's extension; a manager method on another object is a TypeError.
TEST_F(BrowserTest, XmlAitThatAPageLoadsStartsItsApplication)
{
    const std::string out =
        browse("--start-url '" + server.base() + "probe/probe.html' --exit-after 140" +
               " --eval \"owner().createApplication('catalogue.aitx', false) !== null\"@30" +
               " --eval \"(function () { try { document.createElement('object').getOwnerApplication(document); }"
               " catch (e) { return e.name; } })()\"@40 --eval navigator.userAgent@40"
               " --eval \"(function () { var v = document.createElement('object'); v.type = 'video/broadcast';"
               " try { v.bindToCurrentChannel(); return 'bound'; } catch (e) { return 'refused ' + e.name; } })()\"@45"
               " --eval document.title@110");
    EXPECT_TRUE(server.asked("/probe/catalogue.aitx"));
    EXPECT_NE(out.find("XML AIT received in browser window"), std::string::npos) << out;
    EXPECT_NE(out.find("XML AIT handed to the platform: 1 application(s)"), std::string::npos) << out;
    EXPECT_NE(out.find("loaded: " + server.base() + "catalogue/index.html"), std::string::npos) << out;
    EXPECT_NE(out.find("eval document.title: \"Sample Catalogue\""), std::string::npos) << out;
    EXPECT_NE(out.find("\"TypeError\""), std::string::npos) << "a plain object has no getOwnerApplication: " << out;
    EXPECT_NE(out.find(" HbbTV/1.1.1 (; tesmo; hbbtv-browser; ; ; )\""), std::string::npos) << out;
    EXPECT_NE(out.find("\"refused SecurityError\""), std::string::npos) << "a broadcast-independent page: " << out;
}

// Pages served with HbbTV's own type run with their real URL: query and hash, origin, cookie
// and storage, a relative link, a reload and a GET form. One that is not well-formed XML is
// shown as HTML, not as a parser's error page.
TEST_F(BrowserTest, PagesOfTheHbbTVTypeRunWithTheirOwnUrl)
{
    const std::string page = server.base() + "probe/content.html";
    const std::string out = browse(
        "--start-url '" + page + "?x=1#top' --exit-after 100 --eval 'report()@90' && " +
        HBBTV_BROWSER " --start-url '" + server.base() + "probe/broken.html' --exit-after 40" +
        " --eval \"document.querySelector('parsererror') === null && document.getElementById('text').textContent\"@20");
    const std::string origin = server.base().substr(0, server.base().size() - 1);
    EXPECT_NE(out.find(R"(\"href\":\")" + page + R"(?q=tv\")"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"origin\":\")" + origin + R"(\")"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"cookie\":\"seen=yes\")"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"visits\":\"3\")"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"steps\":\"?x=1#top,?x=1,?q=tv,\")"), std::string::npos)
        << "loaded, reloaded, form sent: " << out;
    EXPECT_NE(out.find(R"(\"link\":\")" + server.base() + R"(probe/allowed.txt\")"), std::string::npos) << out;
    EXPECT_NE(out.find(R"(\"xhtml\":\"application/xhtml+xml\")"), std::string::npos) << out;
    EXPECT_NE(out.find("loaded: " + page + "?q=tv in browser window #1"), std::string::npos) << out;
    EXPECT_NE(out.find(": \"Not well-formed & still shown"), std::string::npos) << out;
}

// The sample's application binds a video/broadcast object placed in its page, reads the
// channel list from the capture and changes to the second service, which signals it too,
// so it keeps running. Back on the first service, its service-bound catalogue changes
// channel and dies with its service, and the second service's own application starts.
TEST_F(BrowserTest, ChannelChangesAcrossTheSampleServicesAsATvDoes)
{
    const std::string shot = dir + "/bound.png";
    const char* const bind =
        "(function () { var v = document.createElement('object'); v.type = 'video/broadcast'; v.id = 'vb';"
        " v.style.cssText = 'position:absolute;left:100px;top:100px;width:320px;height:180px';"
        " document.body.appendChild(v); window.states = [];"
        " v.addEventListener('PlayStateChange', function (e) { states.push(e.state); });"
        " v.onChannelChangeSucceeded = function (c) { window.changedTo = c.name; };"
        " var c = v.bindToCurrentChannel(), l = v.getChannelConfig().channelList;"
        " var owner = document.getElementById('appmgr').getOwnerApplication(document);"
        " return [c.name, c.ccid, c.sid, c.idType, l.length, l.item(1).name, l.getChannelByTriplet(1, 1, 2).sid,"
        " owner.privateData.currentChannel.name].join('|'); })()";
    const std::string out = browse(
        capture("app/") + " --exit-after 230 --eval \"" + bind + "\"@40 --screenshot " + shot + "@45" +
        " --eval \"var v = document.getElementById('vb'); v.setChannel(v.getChannelConfig().channelList.item(1))\"@50" +
        " --eval \"[changedTo, states.join(','), document.getElementById('vb').currentChannel.name].join('|')\"@80" +
        " --eval \"var v = document.getElementById('vb'); v.prevChannel()\"@85" +
        " --key RED@110 --key DOWN@115 --key ENTER@120" +
        " --eval \"var v = document.createElement('object'); v.type = 'video/broadcast'; document.body.appendChild(v);"
        " v.bindToCurrentChannel(); v.nextChannel()\"@160 --eval document.title@210");
    EXPECT_NE(out.find("\"Sample TV|ccid:1.1.1|1|12|2|Sample News|2|Sample TV\""), std::string::npos) << out;
    EXPECT_TRUE(isStandIn(pixel(shot, 110, 110)))
        << std::hex << pixel(shot, 110, 110) << ": the broadcast in the object";
    EXPECT_EQ(pixel(shot, 700, 110), 0u) << "outside the object's rectangle the picture is gone";
    EXPECT_NE(out.find("channel change to \"Sample News\" (service 0x0002)"), std::string::npos) << out;
    EXPECT_NE(out.find("the running application keeps running: the new service signals it too"), std::string::npos)
        << out;
    EXPECT_NE(out.find("\"Sample News|1,2,1,2|Sample News\""), std::string::npos)
        << "bound, presenting, tuning, presenting: " << out;
    EXPECT_NE(out.find("channel change to \"Sample TV\" (service 0x0001)"), std::string::npos) << out;
    EXPECT_NE(out.find("loaded: " + server.base() + "catalogue/index.html"), std::string::npos) << out;
    EXPECT_NE(out.find("stopped: 0x10.0x2 " + server.base() + "catalogue/index.html"), std::string::npos) << out;
    EXPECT_NE(out.find("start requested: 0x10.0x3 " + server.base() + "news/index.html (AUTOSTART)"), std::string::npos)
        << out;
    EXPECT_NE(out.find("eval document.title: \"Sample News\""), std::string::npos) << out;
    EXPECT_EQ(out.find("did not complete the table"), std::string::npos)
        << "each new service's table was taken: " << out;
}

// An application that released the broadcast (broadcast-independent) may still select a
// service: the TV tunes, and the new service's AIT, which signals the application, makes it
// broadcast-related again, so that its video/broadcast binds and tells the channel. What
// reaches the broadcast stays refused while it is independent.
TEST_F(BrowserTest, ABroadcastIndependentApplicationComesBackBySelectingAService)
{
    const char* const release =
        "(function () { var v = document.createElement('object'); v.type = 'video/broadcast'; v.id = 'vb';"
        " document.body.appendChild(v); v.bindToCurrentChannel();"
        " window.news = v.getChannelConfig().channelList.item(1); v.setChannel(null);"
        " try { v.bindToCurrentChannel(); return 'bound'; } catch (e) { return e.name + ' ' + v.programmes.length; }"
        " })()";
    const std::string out = browse(
        capture("app/") + " --exit-after 170 --eval \"" + release + "\"@40" +
        " --eval \"document.getElementById('vb').setChannel(news); 'asked'\"@60" +
        " --eval \"var v = document.getElementById('vb'); [v.bindToCurrentChannel().name, v.currentChannel.name].join('|')\"@140");
    EXPECT_NE(out.find("\"SecurityError 0\""), std::string::npos) << "independent: no binding, no programmes: " << out;
    const size_t independent = out.find("index.html is now broadcast-independent");
    EXPECT_NE(independent, std::string::npos) << out;
    EXPECT_NE(out.find("channel change to \"Sample News\" (service 0x0002)", independent), std::string::npos) << out;
    EXPECT_NE(out.find("the running application keeps running: the new service signals it too"), std::string::npos)
        << out;
    EXPECT_NE(out.find("\"Sample News|Sample News\""), std::string::npos) << "broadcast-related again: " << out;
}

// A page reads the terminal's objects, written in its markup or made by the object factory,
// as deployed applications do: the configuration, the capabilities for the profiles the TV
// announces, the parental rating scheme (no threshold set), and debug() into the timeline.
TEST_F(BrowserTest, TerminalObjectsAnswerForTheAnnouncedProfiles)
{
    const std::string out = browse("--start-url '" + server.base() +
                                   "probe/terminal.html' --profiles 0x2 --exit-after 30" + " --eval 'report()'@20");
    EXPECT_NE(out.find(R"(\"language\":\"eng\",\"country\":\"GBR\",\"vendor\":\"tesmo\",\"model\":\"hbbtv-browser\")"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find(R"(\"profile\":\"OITF_HD_UIPROF+DVB_T+PVR\",\"dvbt\":true,\"pvr\":true,\"sd\":0)"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find(R"(\"scheme\":\"dvb-si\",\"ratings\":15,\"threshold\":[\"dvb-si\",\"undefined\",\"undefined\"],)"
                       R"(\"supported\":[true,false],\"made\":true,\"vk\":[403,406])"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("says: terminal objects read"), std::string::npos) << out;
}

// Keys the library admits reach the page as the engine's own input: trusted events with the
// remote's keyCode and key, keypress for a digit, and ENTER following the focused link.
TEST_F(BrowserTest, AdmittedKeysAreTrustedInputWithTheirDefaultActions)
{
    const std::string out =
        browse("--start-url '" + server.base() + "probe/keys.html' --exit-after 110" +
               " --key RED@60 --key 5@62 --eval 'report()'@70 --key ENTER@75 --eval location.search@95");
    EXPECT_NE(out.find("\"keydown 403 ColorF0Red true,keyup 403 ColorF0Red true,"
                       "keydown 53 5 true,keypress 53 5 true,keyup 53 5 true\""),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("eval location.search: \"?followed\""), std::string::npos) << out;
}

// The carousel page subscribes to the sample's stream event object by a URL relative to
// itself: the event it names arrives with its name, data, text and status; an event the
// object does not name ends with an error. Broadcast bytes of any kind arrive: UTF-8 text as
// it is, bytes that are not UTF-8 replaced in the text and whole in the data, and neither
// stops the events after them.
TEST_F(BrowserTest, StreamEventsFromTheCarouselReachTheListener)
{
    const char* const subscribe =
        "(function () { var v = document.createElement('object'); v.type = 'video/broadcast';"
        " document.body.appendChild(v); v.bindToCurrentChannel(); window.events = [];"
        " function keep(e) { events.push([e.name, e.status, e.text, e.data.substring(0, 8)].join('/')); }"
        " v.addStreamEventListener('events/sample', 'news', keep);"
        " v.addStreamEventListener('events/sample', 'weather', keep);"
        " v.addStreamEventListener('dvb://1.1.1.5/events/sample', 'sports', keep); })()";
    const std::string anyBytes = std::regex_replace(
        describe(server.base() + "missing/"), std::regex("event 1 \"Breaking news from the sample broadcaster\"\n"),
        "event 2 \"Test event \xC3\xA4\xC3\xB6\xC3\xBC!\"\n"
        "event 2 \"\xE4\xF6\xFC!\"\n"
        "$&");
    const std::string out = browse(make(anyBytes) + " --exit-after 110 --eval \"" + subscribe + "\"@70" +
                                   " --eval \"events.sort().join('|')\"@100");
    EXPECT_NE(out.find("stream events subscribed: 1.1.1.5/events/sample"), std::string::npos) << out;
    EXPECT_NE(out.find("stream event \"news\" trigger: Breaking news from the sample broadcaster"), std::string::npos)
        << out;
    EXPECT_NE(out.find("\"news/trigger/Breaking news from the sample broadcaster/42726561|sports/error//|"
                       "weather/trigger/Test event \xC3\xA4\xC3\xB6\xC3\xBC!/54657374|"
                       "weather/trigger/\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD!/e4f6fc21\""),
              std::string::npos)
        << out;
    EXPECT_EQ(out.find("g_variant"), std::string::npos) << out;

    // The same event named by an XML event description that a broadband page fetches (there,
    // the relative URL names no description: an error).
    const std::string xml = browse(capture("app/") + " --exit-after 110 --eval \"" +
                                   std::regex_replace(subscribe, std::regex("'events/sample', 'news'"),
                                                      "'" + server.base() + "probe/events.xml', 'headline'") +
                                   "\"@70 --eval \"events.sort().join('|')\"@100");
    EXPECT_TRUE(server.asked("/probe/events.xml"));
    EXPECT_NE(xml.find("stream events subscribed on service 1"), std::string::npos) << xml;
    EXPECT_NE(xml.find("\"headline/trigger/Breaking news from the sample broadcaster/42726561|sports/error//|"
                       "weather/error//\""),
              std::string::npos)
        << xml;
}

// A broadband page reads a file of its service's carousel by XMLHttpRequest and by fetch,
// with the carousel's type, once the AIT puts the carousel within the application's
// boundaries; without that the library refuses both, and the page sees a network error.
TEST_F(BrowserTest, ABroadbandPageReadsItsCarouselsFilesByRequests)
{
    const char* const read =
        "(function () { window.got = [];"
        " var x = new XMLHttpRequest(); x.open('GET', 'dvb://1.1.1.5/data/menu.txt');"
        " x.onload = function () { got.push(['xhr', x.status, x.getResponseHeader('Content-Type'),"
        " x.responseText.split('\\n')[0]].join(' ')); };"
        " x.onerror = function () { got.push('xhr error ' + x.status); }; x.send();"
        " fetch('dvb://1.1.1.5/data/menu.txt').then(function (r) { return r.text().then(function (t) {"
        " got.push(['fetch', r.status, r.headers.get('Content-Type'), t.split('\\n')[0]].join(' ')); }); },"
        " function (e) { got.push('fetch error'); }); })()";
    const std::string run =
        std::string(" --exit-after 110 --eval \"") + read + "\"@70 --eval \"got.sort().join('|')\"@100";
    const std::string inside =
        std::regex_replace(describe(server.base() + "app/"), std::regex("(    boundary " + server.base() + "\n)"),
                           "$1    boundary dvb://1.1.1.5/\n");
    const std::string out = browse(make(inside) + run);
    EXPECT_NE(out.find("\"fetch 200 text/plain Programme guide|xhr 200 text/plain Programme guide\""),
              std::string::npos)
        << out;

    const std::string outside = browse(capture("app/") + run);
    EXPECT_NE(outside.find("\"fetch error|xhr error 0\""), std::string::npos) << outside;
    EXPECT_NE(outside.find("the page's request for dvb://1.1.1.5/data/menu.txt is refused"), std::string::npos)
        << outside;
}

// A foreign program of the same user on the pages' channel: it connects and asks for a
// request and a new application on behalf of the first page. Nothing answers.
std::string callAsForeignClient(const std::string& browserTmp)
{
    std::string answers;
    // The browser's temporary directory is the test's own: the channel in it is this run's.
    std::string socket;
    for (int attempt = 0; attempt < 50 && socket.empty(); ++attempt, g_usleep(100000)) {
        g_autoptr(GDir) tmp = g_dir_open(browserTmp.c_str(), 0, nullptr);
        while (const char* name = tmp ? g_dir_read_name(tmp) : nullptr) {
            g_autofree char* path = g_build_filename(browserTmp.c_str(), name, "channel", nullptr);
            if (g_str_has_prefix(name, "hbbtv-browser-") && g_file_test(path, G_FILE_TEST_EXISTS))
                socket = path;
        }
    }
    const std::string address = "unix:path=" + socket;
    g_autoptr(GDBusConnection) connection =
        !socket.empty() ? g_dbus_connection_new_for_address_sync(
                              address.c_str(), G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT, nullptr, nullptr, nullptr)
                        : nullptr;
    for (const char* call : {"Requests.vet", "Application.createApplication"}) {
        g_autoptr(GVariant) reply =
            connection
                ? g_dbus_connection_call_sync(connection, nullptr, "/tv/tesmo/Browser", "tv.tesmo.Browser", "Call",
                                              g_variant_new("(tss)", guint64(1), call, R"([1, "secret.txt", false])"),
                                              G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr)
                : nullptr;
        const char* answer = nullptr;
        if (reply)
            g_variant_get(reply, "(&s)", &answer);
        answers += std::string(answer ? answer : "(no reply)") + " ";
    }
    return !socket.empty() ? answers : "no channel found";
}

// A hostile page asks for what the platform refuses in every way a page can, and the server
// never hears of it; the redirect's refused hop is not read. The bridge is nowhere on the
// page, a child that names its parent reaches nothing, and neither does a foreign program
// that connects to the pages' channel.
TEST_F(BrowserTest, NoRefusedRequestLeavesAHostilePage)
{
    const std::string browserTmp = dir + "/tmp";
    mkdir(browserTmp.c_str(), 0700);
    std::string foreign;
    std::thread intruder([&foreign, &browserTmp] { foreign = callAsForeignClient(browserTmp); });
    const std::string out = browse("--start-url '" + server.base() +
                                       "probe/hostile.html' --refuse '*secret*'"
                                       " --exit-after 250",
                                   "TMPDIR=" + browserTmp);
    intruder.join();
    EXPECT_EQ(server.pathsWith("secret"), "");
    EXPECT_TRUE(server.asked("/probe/allowed.txt?fickle")) << "a URL is decided as the engine requests it";
    EXPECT_TRUE(server.asked("/probe/hostile-worker.js") && server.asked("/probe/hostile-frame.htm"));
    for (const char* kind :
         {"xhr", "sync", "fetch", "redirect", "frame-xhr", "frame-fetch", "worker-xhr", "worker-fetch", "worker-import",
          "beacon", "eventsource", "import", "img", "script", "link", "css", "form", "ping"})
        EXPECT_NE(out.find(std::string("secret.txt?") + kind + " is refused"), std::string::npos) << kind << "\n"
                                                                                                  << out;
    for (const char* seen : {"says: sync NetworkError", "says: fetch refused", "says: redirect refused",
                             "says: bridge undefined undefined", "says: service workers undefined",
                             "says: child: Application.destroyApplication: the application is gone"})
        EXPECT_NE(out.find(seen), std::string::npos) << seen << "\n" << out;
    const std::string unanswered = "the TV does not answer this page";
    const size_t first = foreign.find(unanswered);
    EXPECT_NE(first, std::string::npos) << foreign;
    EXPECT_NE(foreign.find(unanswered, first + 1), std::string::npos) << "each of its two calls: " << foreign;
    EXPECT_EQ(foreign.find("\"value\""), std::string::npos) << foreign;
    EXPECT_EQ(out.find("secret.txt\",false]"), std::string::npos)
        << "the foreign program's call reached the TV: " << out;
}

// A number that the page's report() gave, by name, in its nth report (from 0).
double reported(const std::string& out, int nth, const std::string& name)
{
    size_t line = out.find("eval report()");
    while (nth-- > 0 && line != std::string::npos)
        line = out.find("eval report()", line + 1);
    std::smatch found;
    const std::string rest = line == std::string::npos ? "" : out.substr(line, out.find('\n', line) - line);
    return std::regex_search(rest, found, std::regex(R"(\\")" + name + R"(\\":(-?[0-9.]+))")) ? std::stod(found[1])
                                                                                              : -1;
}

// A player page, as catalogue applications end in one: an A/V control object plays a clip
// made here through the engine's media player. It reaches playing, and its position and its
// picture move; it lists its tracks and turns its audio off and on; the remote's PLAY_PAUSE
// pauses it, a seek and STOP take effect, and the timeline tells each. A clip that is not
// there ends in the error state, never a hang.
TEST_F(BrowserTest, AnAvControlObjectPlaysAClip)
{
    ASSERT_TRUE(makeMedia(dir + "/clip.mp4", "ball", false)) << "gst-launch-1.0 with x264enc and avenc_aac";
    const std::string clip = server.base() + "media/clip.mp4";
    const std::string first = dir + "/first.png", second = dir + "/second.png";
    const std::string out =
        browse("--start-url '" + server.base() + "probe/player.html?" + clip + "' --exit-after 230" +
               " --eval 'report()'@90 --screenshot " + first + "@92 --screenshot " + second + "@110" +
               " --eval \"(function () { var p = player(), n = [p.getComponents().length];"
               " p.unselectComponent(p.COMPONENT_TYPE_AUDIO); n.push(p.getCurrentActiveComponents(1).length);"
               " p.selectComponent(p.getComponents(1)[0]); n.push(p.getCurrentActiveComponents(1).length);"
               " return n.join('/'); })()\"@115" +
               " --key PLAY_PAUSE@120 --eval 'report()'@130 --eval 'player().seek(3000)'@135" +
               " --eval 'report()'@150 --key STOP@160 --eval 'report()'@170");
    EXPECT_EQ(reported(out, 0, "state"), 1) << out;
    EXPECT_GT(reported(out, 0, "position"), 0) << out;
    EXPECT_GT(reported(out, 0, "time"), 9000) << out;
    EXPECT_GT(changedPixels(first, second, 100, 100, 320, 180), 20) << "the ball moves in the object's rectangle";
    EXPECT_EQ(changedPixels(first, second, 600, 300, 320, 180), 0) << "and nowhere else";
    EXPECT_NE(out.find(": \"2/0/1\""), std::string::npos) << "its video and audio track, the audio off and on: " << out;
    EXPECT_EQ(reported(out, 1, "state"), 2) << out;
    EXPECT_EQ(reported(out, 1, "speed"), 0) << out;
    EXPECT_NEAR(reported(out, 2, "position"), 3000, 100) << out;
    EXPECT_EQ(reported(out, 3, "state"), 0) << out;
    for (const char* line : {"key PLAY_PAUSE delivered to the application", ": playing (browser window #1)",
                             ": pause at ", ": seek to 3000 ms", ": stopped (browser window #1)"})
        EXPECT_NE(out.find(line), std::string::npos) << line << "\n" << out;

    const std::string missing = browse("--start-url '" + server.base() + "probe/player.html?" + server.base() +
                                       "media/missing.mp4' --exit-after 100 --eval 'report()'@90");
    EXPECT_EQ(reported(missing, 0, "state"), 6) << missing;
    EXPECT_EQ(reported(missing, 0, "error"), 5) << missing;
    EXPECT_NE(missing.find("in error (error 5: content not available)"), std::string::npos) << missing;
}

// A capture whose service carries audio and video made here: the picture plays in the
// page's video/broadcast object where the page puts it, full screen behind the page when
// the object says so, and nowhere once the object stops; the page's own panel stays over it.
TEST_F(BrowserTest, TheBroadcastsOwnPictureShowsInVideoBroadcast)
{
    ASSERT_TRUE(barsCapture(dir, server.base(), "picture.html"))
        << "gst-launch-1.0 with x264enc, avenc_aac and mpegtsmux";
    const std::string windowed = dir + "/windowed.png", full = dir + "/full.png", stopped = dir + "/stopped.png";
    const std::string out =
        browse(dir + "/av-capture.ts --exit-after 160 --screenshot " + windowed + "@60" +
               " --eval 'broadcast().setFullScreen(true)'@70 --screenshot " + full + "@90" +
               " --eval 'broadcast().stop()'@110 --screenshot " + stopped + "@130 --eval 'report()'@65");
    auto isBar = [](uint32_t rgb, uint32_t bar) {  // the bars' colours are 75 % of full
        for (int shift : {0, 8, 16})
            if (((bar >> shift) & 0xFF) != (((rgb >> shift) & 0xFF) > 0x80 ? 0xFF : 0))
                return false;
        return true;
    };
    const uint32_t YELLOW = 0xFFFF00, GREEN = 0x00FF00, BLACK = 0;
    EXPECT_TRUE(isBar(pixel(windowed, 168, 130), YELLOW)) << std::hex << pixel(windowed, 168, 130) << "\n" << out;
    EXPECT_TRUE(isBar(pixel(windowed, 260, 130), GREEN)) << std::hex << pixel(windowed, 260, 130);
    EXPECT_EQ(pixel(windowed, 700, 300), BLACK) << "beside the object: no picture";
    EXPECT_TRUE(isBar(pixel(full, 640, 200), GREEN))
        << std::hex << pixel(full, 640, 200) << ": full screen, behind the page";
    EXPECT_TRUE(isRed(pixel(full, 1000, 630))) << "the page's panel over it";
    EXPECT_FALSE(isBar(pixel(stopped, 640, 200), GREEN)) << "stopped: no picture";
    EXPECT_NE(out.find("eval report(): \"1,2|\""), std::string::npos) << "connecting, presenting: " << out;

    // A picture that cannot be played ends the binding in an error within the bound.
    spoilPicture(dir + "/av-capture.ts");
    const std::string spoilt = browse(dir + "/av-capture.ts --load-timeout 1 --exit-after 130 --eval 'report()'@120");
    EXPECT_NE(spoilt.find("eval report(): \"1,0:100|Bars TV:100\""), std::string::npos)
        << "connecting, then unrealized with the channel change error: " << spoilt;
}

// The TV's picture server is the TV's alone: a broadcast-related page that learns where it
// listens (the test tells it once the browser has said) gets nothing from it by a video
// element, fetch, an image, media source extensions or a frame; and without this run's
// secret path, no program on the machine gets the stream either.
TEST_F(BrowserTest, NoPageReachesTheBroadcastsPicture)
{
    ASSERT_TRUE(barsCapture(dir, server.base(), "picture-thief.html"));
    const std::string said = "the broadcast's picture is served on ";
    std::string out, origin;
    unsigned withoutSecret = 0;
    FILE* pipe = popen((HBBTV_BROWSER " " + dir + "/av-capture.ts --exit-after 260 2>&1").c_str(), "r");
    char line[4096];
    while (fgets(line, sizeof line, pipe)) {
        out += line;
        const std::string text = line;
        const size_t at = text.find(said);
        if (origin.empty() && at != std::string::npos) {
            origin = text.substr(at + said.size(), text.find(',', at) - at - said.size());
            std::ofstream(dir + "/picture-origin.txt") << origin;
            withoutSecret = statusOf(origin + "/service/1.ts");
        }
    }
    EXPECT_EQ(pclose(pipe), 0) << out;
    ASSERT_NE(origin, "") << out;
    EXPECT_EQ(withoutSecret, unsigned(SOUP_STATUS_NOT_FOUND)) << "the stream without the secret";

    const std::string refused = "the page's request for " + origin + "/service/1.ts is refused (the TV's own picture)";
    EXPECT_NE(out.find(refused), std::string::npos) << out;
    for (const char* seen :
         {"says: thief video 0 ", "says: thief fetch refused", "says: thief img refused", "says: thief mse refused"})
        EXPECT_NE(out.find(seen), std::string::npos) << seen << "\n" << out;
    EXPECT_EQ(out.find("says: thief frame read"), std::string::npos) << out;
    EXPECT_TRUE(std::regex_search(out, std::regex("says: thief video 0 \\S+ 0\\b"))) << "nothing played: " << out;
    EXPECT_FALSE(std::regex_search(out, std::regex("[0-9a-f]{32}"))) << "the secret is never told: " << out;
}

// A page that allocates without end is stopped at its memory limit, and one whose web
// process is killed is noticed: each fails as a TV's browser reports it, the application
// stops, and its keys stay with the TV.
TEST_F(BrowserTest, ADeadOrRunawayPageIsNoticed)
{
    const std::string probe = "--start-url '" + server.base() + "probe/probe.html";
    const std::string runaway =
        browse(probe + "?hog' --page-memory 64 --exit-after 150 --eval 'takeRed()'@20 --key RED@140");
    EXPECT_NE(runaway.find("has died (over its memory limit)"), std::string::npos) << runaway;
    EXPECT_NE(runaway.find("stopped: a broadband application " + server.base() + "probe/probe.html?hog"),
              std::string::npos)
        << runaway;
    EXPECT_NE(runaway.find("key RED stays with the TV"), std::string::npos) << runaway;

    const std::string killed = browse(probe + "' --exit-after 300 --eval 'takeRed()'@20 --key RED@280"
                                              " & sleep 3; pkill -9 -f '[W]ebKitWebProcess'; wait");
    EXPECT_NE(killed.find("has died (its web process crashed)"), std::string::npos) << killed;
    EXPECT_NE(killed.find("key RED stays with the TV"), std::string::npos) << killed;
}

// A page that throws while it loads, then loops for ever, holds up neither the library's
// ticks nor the platform: keys are still decided and the run ends on time.
TEST_F(BrowserTest, APageThatThrowsAndLoopsDoesNotStopTheTicks)
{
    const std::string out = browse(
        "--start-url '" + server.base() + "probe/probe.html?throw' --exit-after 60 --key 1@20 && " +
        HBBTV_BROWSER " --start-url '" + server.base() + "probe/probe.html?loop'" + " --exit-after 120 --key RED@100");
    EXPECT_NE(out.find("tick    20  key 1 delivered to the application"), std::string::npos) << out;
    EXPECT_NE(out.find("tick   100  key RED delivered to the application"), std::string::npos) << out;
    EXPECT_NE(out.find("tick   120  memory (proportional set size)"), std::string::npos) << out;
}

// Each fault a broadband server can have, as the first transport of the sample's AUTOSTART
// application: the load ends in its outcome once, within the load timeout, and the
// application fails over to the carousel, whose page loads.
TEST_F(BrowserTest, EveryBroadbandFaultFailsOverToTheCarousel)
{
    FaultServer faults(dir);
    ASSERT_TRUE(faults.isRunning()) << "python3 " PAGES_DIR "/fault_server.py";
    const std::string failed = "load failed: ";
    const struct {
        const char* fault;
        std::string base;  // the application's broadband transport
        std::string first;  // the timeline's line: what comes before the page's URL
        std::string last;  // and after its window
    } cases[] = {
        {"name that does not resolve", "http://unresolvable.example/app/", failed, " (Error resolving"},
        {"refused connection", faults.refusedUrl("app/"), failed,
         " (Could not connect to 127.0.0.1: Connection refused)"},
        {"server that never answers", faults.url("silent/"), failed, " (nothing received for 1 s)"},
        {"answer that stops midway", faults.url("stall/carousel/"), failed, " (nothing received for 1 s)"},
        {"connection reset mid-response", faults.url("reset/carousel/"), failed,
         " (Connection terminated unexpectedly)"},
        {"self-signed certificate", faults.secureUrl("files/carousel/"), failed, " (Unacceptable TLS certificate)"},
        {"HTTP 404", faults.url("status/404/"), "HTTP 404: ", ""},
        {"HTTP 500", faults.url("status/500/"), "HTTP 500: ", ""},
        {"HTTP 503", faults.url("status/503/"), "HTTP 503: ", ""},
        {"redirect loop", faults.url("loop/"), failed, " (Load cannot follow more than 20 redirections)"},
        {"empty 200", faults.url("empty/"), failed, " (an empty page)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        if (!isolated && c.base.find(".example") != std::string::npos) {
            std::cout << "[  SKIPPED ] " << c.fault << ": no network namespace of our own to resolve names in\n";
            continue;
        }
        const std::string page = c.base + "index.html";
        // Time for the carousel's page after the bound, on a loaded machine too.
        const std::string out = browse(captureAt(c.base) + " --load-timeout 1 --exit-after 150");
        const std::string line = c.first + page + " in browser window #1" + c.last;
        const size_t at = out.find(line);
        EXPECT_NE(at, std::string::npos) << out;
        EXPECT_EQ(out.find(page + " in browser window", at + line.size()), std::string::npos)
            << "reported once: " << out;
        EXPECT_EQ(out.find("loaded: " + page), std::string::npos) << out;
        EXPECT_NE(out.find("start requested: 0x10.0x1 dvb://1.1.1.5/index.html (AUTOSTART)"), std::string::npos) << out;
        EXPECT_NE(out.find("stopped: 0x10.0x1 " + page), std::string::npos) << out;
        EXPECT_NE(out.find("loaded: dvb://1.1.1.5/index.html in browser window #2"), std::string::npos) << out;
    }
}

// Media sources that fail, in the A/V control object of a page from the same server: each
// ends in the error state with HbbTV's code within the bound, never connecting for ever.
TEST_F(BrowserTest, EveryMediaFaultEndsInTheErrorState)
{
    ASSERT_TRUE(makeMedia(dir + "/clip.mp4", "ball", false)) << "gst-launch-1.0 with x264enc and avenc_aac";
    std::ofstream(dir + "/clip.mpd") << "<MPD>these bytes become no manifest</MPD>";
    symlink(PAGES_DIR, (dir + "/probe").c_str());
    FaultServer faults(dir);
    ASSERT_TRUE(faults.isRunning()) << "python3 " PAGES_DIR "/fault_server.py";
    const struct {
        const char* fault;
        std::string url;
        int error;  // 0 format not supported, 1 cannot connect, 4 content corrupt, 5 not available
        int tick;  // when the page reports: after the watch and the diagnosis, a second each (half the clip for a stall)
    } cases[] = {
        {"refused connection", faults.refusedUrl("clip.mp4"), 1, 200},
        {"server that never answers", faults.url("silent/clip.mp4"), 1, 200},
        {"bytes that are no media", faults.url("garbage/clip.mp4"), 0, 200},
        {"not on the server", faults.url("files/missing.mp4"), 5, 200},
        {"server that stalls mid-stream", faults.url("stall/clip.mp4"), 1, 390},
        {"DASH manifest refused", faults.refusedUrl("clip.mpd"), 1, 200},
        {"DASH manifest never answered", faults.url("silent/clip.mpd"), 1, 200},
        {"DASH manifest that is no manifest", faults.url("garbage/clip.mpd"), 4, 200},
        {"DASH manifest not on the server", faults.url("files/missing.mpd"), 5, 200},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const std::string out = browse("--start-url '" + faults.url("files/probe/player.html?") + c.url +
                                       "' --load-timeout 1 --exit-after " + std::to_string(c.tick + 10) +
                                       " --eval 'report()'@" + std::to_string(c.tick));
        EXPECT_EQ(reported(out, 0, "state"), 6) << out;
        EXPECT_EQ(reported(out, 0, "error"), c.error) << out;
    }
}

// The formats an HbbTV 1.x terminal plays, each served with its type: an MPEG-2 transport
// stream with H.264 and AAC, one with MPEG-2 video and MPEG-1 audio, an MP3 file, and an MP3
// that a server streams in real time without end (the page is loaded and shown at once all
// the same). Each plays: its position moves, and a file tells its length.
TEST_F(BrowserTest, TransportStreamsAndMp3PlayAsA1xTerminalPlaysThem)
{
    ASSERT_TRUE(makeMedia(dir + "/clip.ts", "ball", true)) << "gst-launch-1.0 with x264enc and avenc_aac";
    ASSERT_TRUE(makeMpeg2Media(dir + "/mpeg2.ts")) << "gst-launch-1.0 with mpeg2enc and avenc_mp2";
    ASSERT_TRUE(makeMp3(dir + "/clip.mp3")) << "gst-launch-1.0 with lamemp3enc";
    symlink(PAGES_DIR, (dir + "/probe").c_str());
    FaultServer server(dir);
    ASSERT_TRUE(server.isRunning()) << "python3 " PAGES_DIR "/fault_server.py";
    const struct {
        const char* path;
        int tick;  // when the page reports: a live stream is buffered first
        bool live;
    } cases[] = {
        {"files/clip.ts", 100, false},
        {"files/mpeg2.ts", 100, false},
        {"files/clip.mp3", 100, false},
        {"live/clip.mp3", 250, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const std::string out =
            browse("--start-url '" + server.url("files/probe/player.html?") + server.url(c.path) + "' --exit-after " +
                   std::to_string(c.tick + 10) + " --eval 'report()'@" + std::to_string(c.tick));
        EXPECT_EQ(reported(out, 0, "state"), 1) << out;
        EXPECT_GT(reported(out, 0, "position"), 0) << out;
        if (c.live)
            EXPECT_EQ(reported(out, 0, "time"), 0) << "a live stream has no length\n" << out;
        else
            EXPECT_GT(reported(out, 0, "time"), 9000) << out;
        const size_t loaded = out.find("loaded: "), shown = out.find("shown"), eval = out.find("eval report()");
        EXPECT_TRUE(loaded < eval && shown < eval) << "the page is loaded and shown while the media plays\n" << out;
    }
}

// A now-and-next page on a two-service capture whose first service has video, audio in two
// languages and DVB subtitles, and its programmes in the EIT, changing while the page runs.
// The page lists the components with what the PMT and the EIT say of them, switches the
// audio to English (the picture plays that stream), turns subtitles on and audio off, shows the programmes
// with their ratings, and hears of the change; the second service's programmes follow a
// channel change, and a broadcast-independent application gets none.
TEST_F(BrowserTest, ComponentsAndProgrammesOfATwoServiceCapture)
{
    ASSERT_TRUE(makeTwoLanguageMedia(dir + "/two.ts")) << "gst-launch-1.0 with taginject, x264enc and avenc_aac";
    std::ofstream(dir + "/guide.desc")
        << "transport_stream 0x0001 network 0x0001\n"
           "network 0x0031 \"Test Network\"\n"
           "service 0x0001 \"Guide TV\" provider \"Sample Broadcaster\" pmt 0x0100 ait 0x0101\n"
           "ait version 1\nsection\n"
           "  application 0x10 0x0001 AUTOSTART priority 5 profile 0x0000 1.1.1\n"
           "    transport 1 http "
        << server.base()
        << "probe/\n    location guide.html\n"
           "av two.ts 0x0110 tags 0x01,0x02,0x03\n"
           "subtitles 0x0120 deu tag 0x20 hard-of-hearing\n"
           "programmes version 1\n"
           "programme present 0x0101 2026-11-25T20:00:00Z 00:15:00 \"Abendschau\" \"Der Tag – kurz\" language deu"
           " rating DEU 12 component 0x05 0x03 0x01 deu \"Bild\" component 0x06 0x03 0x02 deu \"Stereo\"\n"
           "programme following 0x0102 2026-11-25T20:15:00Z 01:30:00 \"Der Film\" \"Ein Test\" rating DEU 16\n"
           "programmes version 2 at 80%\n"
           "programme present 0x0102 2026-11-25T20:15:00Z 01:30:00 \"Der Film\" \"Ein Test\" rating DEU 16\n"
           "programme following 0x0103 2026-11-25T21:45:00Z 00:15:00 \"Spätnachrichten\" \"Vor der Nacht\"\n"
           "service 0x0002 \"Second TV\" provider \"Sample Broadcaster\" pmt 0x0200 ait 0x0201\n"
           "ait version 1\nsection\n"
           "  application 0x10 0x0001 AUTOSTART priority 5 profile 0x0000 1.1.1\n"
           "    transport 1 http "
        << server.base()
        << "probe/\n    location guide.html\n"
           "programmes version 1\n"
           "programme present 0x0201 2026-11-25T20:00:00Z 00:30:00 \"News at Eight\" \"Headlines\" language eng\n"
           "programme following 0x0202 2026-11-25T20:30:00Z 00:30:00 \"Business Hour\" \"Markets\"\n"
           "repeat 5\n";
    ASSERT_EQ(std::system((MAKE_SAMPLE " " + dir + "/guide.desc " + dir + "/guide.ts").c_str()), 0);
    // Each AIT section 40 ticks apart, and the EIT spread as far: the second version of the
    // programmes comes at about tick 180.
    const std::string out = browse(
        dir + "/guide.ts --section-interval 40 --exit-after 420" + " --eval 'components()'@60" +
        " --eval 'active()'@62 --eval \"pick(1, 'eng') + ' ' + pick(2, 'deu')\"@70" +
        " --eval 'selections.join()'@90 --eval 'broadcast().unselectComponent(1); active()'@95" +
        " --eval 'programmes()'@100" + " --eval 'programmes() + \" changes \" + changes'@300" +
        " --eval \"document.getElementById('now').textContent\"@302" + " --eval 'broadcast().currentChannel.nid'@304" +
        " --eval 'broadcast().nextChannel()'@310 --eval 'programmes()'@400");
    EXPECT_NE(
        out.find("eval components(): \"0:272:1:AVC_SD_25:-:-:-|1:273:2:HEAAC:ger:false:-|1:274:3:HEAAC:eng:false:-|"
                 "2:288:32:DVB-SUBT:deu:-:true\""),
        std::string::npos)
        << out;
    EXPECT_NE(out.find("eval active(): \"272,273\""), std::string::npos) << out;
    EXPECT_NE(out.find(": \"272,274 272,274,288\""), std::string::npos) << out;
    EXPECT_NE(out.find("the broadcast's audio plays PID(s) 0x112"), std::string::npos) << out;
    EXPECT_NE(out.find("eval selections.join(): \"1,2\""), std::string::npos) << out;
    EXPECT_NE(out.find("active(): \"272,288\""), std::string::npos) << "no audio of either language: " << out;
    EXPECT_LT(out.find("the broadcast's audio is off"), out.find("eval programmes() + ")) << out;
    EXPECT_NE(out.find("eval programmes(): \"Abendschau/Der Tag – kurz/1795636800/900/dvb://1.1.1;101/1/ccid:1.1.1/"
                       "dvb-si:12:deu|Der Film/Ein Test/1795637700/5400/dvb://1.1.1;102/1/ccid:1.1.1/dvb-si:16:deu\""),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("\"Der Film/Ein Test/1795637700/5400/dvb://1.1.1;102/1/ccid:1.1.1/dvb-si:16:deu|"
                       "Spätnachrichten/Vor der Nacht/1795643100/900/dvb://1.1.1;103/1/ccid:1.1.1/ changes 1\""),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("textContent: \"Der Film\""), std::string::npos) << out;
    EXPECT_NE(out.find("currentChannel.nid: 49"), std::string::npos) << out;
    EXPECT_NE(out.find("eval programmes(): \"News at Eight/Headlines/1795636800/1800/dvb://1.1.2;201/1/ccid:1.1.2/|"
                       "Business Hour/Markets/1795638600/1800/dvb://1.1.2;202/1/ccid:1.1.2/\""),
              std::string::npos)
        << out;
}

// A page's own requests to each fault end, as failures, within the bound: an asynchronous
// XMLHttpRequest with its error event and status 0, a fetch rejected (or, where the response
// began, answered with its status).
TEST_F(BrowserTest, APagesRequestsToFaultsEndWithinTheBound)
{
    symlink(PAGES_DIR, (dir + "/probe").c_str());
    FaultServer faults(dir);
    ASSERT_TRUE(faults.isRunning()) << "python3 " PAGES_DIR "/fault_server.py";
    const std::string ask =
        "(function () { window.outcomes = {}; var urls = {refused: '" + faults.refusedUrl("x.txt") +
        "', silent: '/silent/x',"
        " stalled: '/stall/probe/allowed.txt', reset: '/reset/probe/allowed.txt', loop: '/loop/x', missing: '/status/404/x',"
        " tls: '" +
        faults.secureUrl("files/probe/allowed.txt") + "'" +
        (isolated ? ", unresolved: 'http://unresolvable.example/x'" : "") +
        "};"
        " Object.keys(urls).forEach(function (k) { var x = new XMLHttpRequest(); x.open('GET', urls[k]);"
        " x.onerror = function () { outcomes[k + ' xhr'] = 'error ' + x.status; };"
        " x.onload = function () { outcomes[k + ' xhr'] = 'load ' + x.status; }; x.send();"
        " fetch(urls[k]).then(function (r) { outcomes[k + ' fetch'] = 'status ' + r.status; },"
        " function () { outcomes[k + ' fetch'] = 'rejected'; }); }); })()";
    const std::string out =
        browse("--start-url '" + faults.url("files/probe/probe.html") + "' --load-timeout 1 --exit-after 150" +
               " --eval \"" + ask + "\"@20 --eval \"JSON.stringify(outcomes)\"@140");
    for (const char* outcome :
         {"refused xhr\\\":\\\"error 0", "refused fetch\\\":\\\"rejected", "silent xhr\\\":\\\"error 0",
          "silent fetch\\\":\\\"rejected", "stalled xhr\\\":\\\"error 0", "stalled fetch\\\":\\\"status 200",
          "reset xhr\\\":\\\"error 0", "reset fetch\\\":\\\"status 200", "loop xhr\\\":\\\"error 0",
          "loop fetch\\\":\\\"rejected", "missing xhr\\\":\\\"load 404", "missing fetch\\\":\\\"status 404",
          "tls xhr\\\":\\\"error 0", "tls fetch\\\":\\\"rejected"})
        EXPECT_NE(out.find(outcome), std::string::npos) << outcome << "\n" << out;
    for (const char* outcome : {"unresolved xhr\\\":\\\"error 0", "unresolved fetch\\\":\\\"rejected"})
        EXPECT_TRUE(!isolated || out.find(outcome) != std::string::npos) << outcome << "\n" << out;
}

// The bundled sample as a newcomer runs it, with no rule for its loads: sample.example does
// not resolve, so the application comes from the carousel and draws its banner.
TEST_F(BrowserTest, TheSampleWithoutANetworkShowsTheCarouselBanner)
{
    if (!isolated)
        GTEST_SKIP() << "no network namespace of our own to resolve names in";
    const std::string shot = dir + "/sample.png";
    const std::string out = browse("--exit-after 100 --screenshot " + shot + "@60");
    EXPECT_NE(out.find("load failed: http://sample.example/app/index.html in browser window #1 (Error resolving"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("loaded: dvb://1.1.1.5/index.html in browser window #2"), std::string::npos) << out;
    EXPECT_TRUE(isRed(pixel(shot, 742, 644))) << std::hex << pixel(shot, 742, 644);  // the banner's red edge
    EXPECT_FALSE(isRed(pixel(shot, 742, 400))) << "above the banner: the broadcast shows through";
}

}  // namespace

int main(int argc, char** argv)
{
    isolated = isolateNetwork();
    if (!isolated)
        std::cout
            << "the browser tests run in the machine's own network: tests that need a name not to resolve are skipped\n";
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
