#ifndef TESMO_HBBTV_TESTS_XMLAITINPUT_H
#define TESMO_HBBTV_TESTS_XMLAITINPUT_H

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "tesmo_hbbtv/browser_core.h"

namespace tesmo_test {

// An XML AIT as the browser core hands it over, described by value; record() builds the
// core's records, which point into this object and live as long as it does.
class XmlAitInput {
public:
    struct Transport {
        int32_t protocol = 3;
        std::optional<std::string> urlBase;
        int32_t remote = 0;
        uint16_t onid = 0, tsid = 0, sid = 0;
        uint8_t componentTag = 0;
    };
    struct Application {
        std::optional<std::string> name;
        uint32_t organisationId = 19;
        uint32_t applicationId = 500;
        int32_t controlCode = 1, visibility = 3, serviceBound = 0, priority = 1;
        std::vector<DAXO_AITProfile> profiles{{0x0000, 1, 1, 1}};
        bool profilesMissing = false;  // a count with a null array
        std::vector<Transport> transports;
        bool transportsMissing = false;
        std::optional<std::string> location;
        std::vector<std::optional<std::string>> boundaries;
        int32_t usageType = 0;
    };

    std::vector<Application> applications;
    std::optional<int32_t> declaredCount;  // the count the record claims, when not the real one

    DAXO_AITData record();

private:
    const char* text(const std::optional<std::string>& value);

    std::deque<std::string> strings;
    std::deque<std::vector<DAXO_AITApplicationTransport>> transports;
    std::deque<std::vector<const char*>> boundaries;
    std::vector<DAXO_AITApplication> records;
};

}  // namespace tesmo_test

#endif
