#ifndef TESMO_BROWSER_BROADCASTPICTURE_H
#define TESMO_BROWSER_BROADCASTPICTURE_H

#include <libsoup/soup.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "ServiceScanner.h"
#include "TransportStream.h"

// The broadcast's own audio and video, for the TV's own picture view: each service of the
// capture that carries them is served over HTTP from 127.0.0.1 as a transport stream of its
// own (a PAT that names only it, its PMT, its elementary streams), taken from the capture
// the first time it is asked for. Services without audio or video have no picture. The
// paths start with a secret of this run, so that nothing else on the machine can read the
// streams; pages never learn them, and every page request to the server is refused.
class BroadcastPicture {
public:
    BroadcastPicture(const TransportStream& capture, const std::vector<Service>& services);
    ~BroadcastPicture();
    BroadcastPicture(const BroadcastPicture&) = delete;
    BroadcastPicture& operator=(const BroadcastPicture&) = delete;

    // Where the service's picture plays from; "" when it has none.
    std::string urlOf(uint16_t serviceId) const;
    // The URL is the picture server's (its scheme, host and port), whatever its path.
    bool serves(const std::string& url) const;
    // "http://127.0.0.1:PORT" without the secret; "" when nothing is served.
    std::string origin() const { return server && base.size() > 1 ? base.substr(0, base.size() - 1) : ""; }

private:
    static void serve(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self);
    // The service's stream, made once into a file that is unlinked at once and kept mapped;
    // null when it cannot be made.
    GBytes* streamOf(const Service& service);

    const TransportStream& capture;
    std::vector<Service> services;  // those with a picture
    SoupServer* server = nullptr;
    std::string base;  // http://127.0.0.1:PORT/
    int port = -1;
    std::string secret;  // the first part of every path
    std::string directory;
    std::map<uint16_t, GBytes*> streams;  // by service, the mapped files (null: none to be had)
};

#endif
