#ifndef TESMO_TV_XMLAIT_H
#define TESMO_TV_XMLAIT_H

#include <deque>
#include <string>
#include <vector>

#include "tesmo_hbbtv/browser_core.h"

// An XML AIT (ETSI TS 102 809, urn:dvb:mhp:2009) read into the record the browser core
// hands to the library. The record points into this object, which must outlive its use.
class XmlAit {
public:
    // False with a reason when the file cannot be read or is not XML.
    bool load(const std::string& path, std::string& error);
    DAXO_AITData* record() { return &data; }

private:
    struct Application {
        DAXO_AITApplication record{};
        std::vector<DAXO_AITProfile> profiles;
        std::vector<DAXO_AITApplicationTransport> transports;
        std::vector<const char*> boundaries;
    };
    const char* keep(const std::string& text);

    std::deque<std::string> strings;
    std::deque<Application> applications;
    std::vector<DAXO_AITApplication> records;
    DAXO_AITData data{0, nullptr};
};

#endif
