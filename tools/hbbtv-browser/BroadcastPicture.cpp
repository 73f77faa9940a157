#include "BroadcastPicture.h"

#include <glib/gstdio.h>

#include <algorithm>
#include <cstdio>
#include <set>

#include "SectionBuilder.h"

namespace {

const size_t PACKET = 188;
const size_t SECTION_ROOM = PACKET - 5;  // after the packet's header and pointer field
const size_t PAT_EVERY = 2000;  // packets between two copies of the service's own PAT
const size_t SECRET_BYTES = 16;

// Hexadecimal from the kernel's random source; empty when it cannot be read.
std::string randomSecret()
{
    unsigned char bytes[SECRET_BYTES];
    FILE* random = std::fopen("/dev/urandom", "rb");
    const bool read = random && std::fread(bytes, 1, sizeof bytes, random) == sizeof bytes;
    if (random)
        std::fclose(random);
    std::string text;
    for (size_t i = 0; read && i < sizeof bytes; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", bytes[i]);
        text += pair;
    }
    return text;
}

// One section in a packet of its own, as the service's PAT fits.
tesmo_test::Bytes sectionPacket(uint16_t pid, const tesmo_test::Bytes& section, uint8_t continuity)
{
    const uint8_t header[] = {0x47, uint8_t(0x40 | (pid >> 8)), uint8_t(pid), uint8_t(0x10 | (continuity & 0x0F)),
                              0x00};
    tesmo_test::Bytes packet(PACKET, 0xFF);
    std::copy(std::begin(header), std::end(header), packet.begin());
    std::copy_n(section.begin(), std::min(section.size(), SECTION_ROOM), packet.begin() + sizeof header);
    return packet;
}

// The PMT of the service's audio and video, in one packet as the PAT: where the streams'
// descriptors would not fit, without them (the player then names the audio by PID alone).
tesmo_test::Bytes pictureMap(const Service& service)
{
    tesmo_test::Bytes pmt = tesmo_test::pmtSection(service.serviceId, service.avStreams, {}, service.pcrPid);
    if (pmt.size() <= SECTION_ROOM)
        return pmt;
    std::vector<tesmo_test::Stream> bare = service.avStreams;
    for (tesmo_test::Stream& stream : bare)
        stream.descriptors.clear();
    return tesmo_test::pmtSection(service.serviceId, bare, {}, service.pcrPid);
}

}  // namespace

BroadcastPicture::BroadcastPicture(const TransportStream& stream, const std::vector<Service>& all) : capture(stream)
{
    for (const Service& service : all)
        if (service.hasPicture())
            services.push_back(service);
    secret = randomSecret();
    if (services.empty() || secret.empty())
        return;
    server = soup_server_new(nullptr, nullptr);
    soup_server_add_handler(server, ("/" + secret + "/service/").c_str(), serve, this, nullptr);
    GError* error = nullptr;
    if (!soup_server_listen_local(server, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, &error)) {
        g_warning("the broadcast's picture cannot be served: %s", error->message);
        g_clear_error(&error);
        return;
    }
    GSList* uris = soup_server_get_uris(server);
    char* text = uris ? g_uri_to_string(static_cast<GUri*>(uris->data)) : nullptr;
    base = text ? text : "";
    port = uris ? g_uri_get_port(static_cast<GUri*>(uris->data)) : -1;
    g_free(text);
    g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
    char* made = g_dir_make_tmp("hbbtv-browser-picture-XXXXXX", nullptr);
    directory = made ? made : "";
    g_free(made);
}

BroadcastPicture::~BroadcastPicture()
{
    if (server) {
        soup_server_disconnect(server);
        g_object_unref(server);
    }
    for (const auto& stream : streams)
        if (stream.second)
            g_bytes_unref(stream.second);
    if (!directory.empty())
        g_rmdir(directory.c_str());
}

std::string BroadcastPicture::urlOf(uint16_t serviceId) const
{
    for (const Service& service : services)
        if (service.serviceId == serviceId && !base.empty())
            return base + secret + "/service/" + std::to_string(serviceId) + ".ts";
    return "";
}

// This machine by any name the engine may use for it, on the server's port: the secret keeps
// out a name that only resolves here.
bool BroadcastPicture::serves(const std::string& url) const
{
    if (!server || port < 0)
        return false;
    GUri* asked = g_uri_parse(url.c_str(), G_URI_FLAGS_NONE, nullptr);
    bool same = false;
    if (asked && g_uri_get_host(asked) && g_uri_get_port(asked) == port) {
        char* lower = g_ascii_strdown(g_uri_get_host(asked), -1);
        const std::string host = lower;
        g_free(lower);
        same = g_str_has_prefix(host.c_str(), "127.") || host == "localhost" ||
               g_str_has_suffix(host.c_str(), ".localhost") || host.find(':') != std::string::npos || host == "0.0.0.0";
    }
    if (asked)
        g_uri_unref(asked);
    return same;
}

GBytes* BroadcastPicture::streamOf(const Service& service)
{
    auto known = streams.find(service.serviceId);
    if (known != streams.end())
        return known->second;
    GBytes*& stream = streams[service.serviceId];
    stream = nullptr;
    const std::string file = directory + "/" + std::to_string(service.serviceId) + ".ts";
    std::FILE* out = directory.empty() ? nullptr : std::fopen(file.c_str(), "wb");
    if (!out)
        return stream;
    // The service's audio and video under a PMT of their own: the player waits for every stream
    // a PMT lists, and the picture has no subtitles, data or application streams.
    const std::set<uint16_t> pids(service.avPids.begin(), service.avPids.end());
    const tesmo_test::Bytes pat =
        tesmo_test::patSection(capture.transportStreamId(), {{service.serviceId, service.pmtPid}});
    const tesmo_test::Bytes pmt = pictureMap(service);
    size_t written = 0;
    uint8_t continuity = 0;
    bool ok = true;
    capture.forEachPacket([&](uint8_t* packet, size_t) {
        if (!pids.count(uint16_t((packet[1] & 0x1F) << 8 | packet[2])))
            return;
        if (written++ % PAT_EVERY == 0) {
            ok = ok && std::fwrite(sectionPacket(0x0000, pat, continuity).data(), 1, PACKET, out) == PACKET;
            ok = ok && std::fwrite(sectionPacket(service.pmtPid, pmt, continuity++).data(), 1, PACKET, out) == PACKET;
        }
        ok = ok && std::fwrite(packet, 1, PACKET, out) == PACKET;
    });
    GMappedFile* mapped = std::fclose(out) == 0 && ok ? g_mapped_file_new(file.c_str(), FALSE, nullptr) : nullptr;
    g_unlink(file.c_str());
    if (mapped) {
        stream = g_mapped_file_get_bytes(mapped);
        g_mapped_file_unref(mapped);
    }
    return stream;
}

void BroadcastPicture::serve(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer data)
{
    auto* self = static_cast<BroadcastPicture*>(data);
    GBytes* stream = nullptr;
    for (const Service& service : self->services)
        if (g_strcmp0(path, ("/" + self->secret + "/service/" + std::to_string(service.serviceId) + ".ts").c_str()) ==
            0)
            stream = self->streamOf(service);
    if (!stream) {
        soup_server_message_set_status(message, SOUP_STATUS_NOT_FOUND, nullptr);
        return;
    }
    soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
    soup_message_headers_set_content_type(soup_server_message_get_response_headers(message), "video/mp2t", nullptr);
    soup_message_body_append_bytes(soup_server_message_get_response_body(message), stream);
}
