// XML AIT records, as the browser core hands them over, built from the fuzz bytes.

#include <fuzzer/FuzzedDataProvider.h>

#include <deque>
#include <string>
#include <vector>

#include "si/AIT.h"

using namespace TesmoHbbTV;

namespace {

// Keeps the strings and arrays alive while the records point into them.
struct Storage {
    std::deque<std::string> strings;
    std::deque<std::vector<DAXO_AITProfile>> profiles;
    std::deque<std::vector<DAXO_AITApplicationTransport>> transports;
    std::deque<std::vector<const char*>> boundaries;

    const char* maybeString(FuzzedDataProvider& in)
    {
        if (in.ConsumeBool())
            return nullptr;
        strings.push_back(in.ConsumeRandomLengthString(64));
        return strings.back().c_str();
    }
};

DAXO_AITApplication application(FuzzedDataProvider& in, Storage& store)
{
    DAXO_AITApplication app{};
    app.name = store.maybeString(in);
    app.organisation_id = in.ConsumeIntegral<uint32_t>();
    app.application_id = in.ConsumeIntegral<uint32_t>();
    app.control_code = in.ConsumeIntegral<int32_t>();
    app.visibility = in.ConsumeIntegralInRange<int32_t>(0, 4);
    app.service_bound = in.ConsumeIntegralInRange<int32_t>(0, 2);
    app.priority = in.ConsumeIntegral<int32_t>();

    store.profiles.emplace_back(in.ConsumeIntegralInRange<size_t>(0, 3));
    for (DAXO_AITProfile& p : store.profiles.back())
        p = DAXO_AITProfile{in.ConsumeIntegral<uint16_t>(), in.ConsumeIntegral<uint8_t>(),
                            in.ConsumeIntegral<uint8_t>(), in.ConsumeIntegral<uint8_t>()};
    app.num_profiles = static_cast<int32_t>(store.profiles.back().size());
    app.profiles = in.ConsumeBool() ? store.profiles.back().data() : nullptr;

    store.transports.emplace_back(in.ConsumeIntegralInRange<size_t>(0, 3));
    for (DAXO_AITApplicationTransport& t : store.transports.back())
        t = DAXO_AITApplicationTransport{in.PickValueInArray({1, 3, 0, -1}), store.maybeString(in),
                                         in.ConsumeIntegral<int32_t>(),      in.ConsumeIntegral<uint16_t>(),
                                         in.ConsumeIntegral<uint16_t>(),     in.ConsumeIntegral<uint16_t>(),
                                         in.ConsumeIntegral<uint8_t>()};
    app.num_transports = static_cast<int32_t>(store.transports.back().size());
    app.transports = in.ConsumeBool() ? store.transports.back().data() : nullptr;

    app.location = store.maybeString(in);
    store.boundaries.emplace_back(in.ConsumeIntegralInRange<size_t>(0, 3));
    for (const char*& b : store.boundaries.back())
        b = store.maybeString(in);
    app.num_boundaries = static_cast<int32_t>(store.boundaries.back().size());
    app.boundaries = store.boundaries.back().data();
    app.usage_type = in.ConsumeIntegral<int32_t>();
    return app;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    Storage store;
    std::vector<DAXO_AITApplication> apps;
    const size_t count = in.ConsumeIntegralInRange<size_t>(0, 3);
    for (size_t i = 0; i < count; ++i)
        apps.push_back(application(in, store));
    DAXO_AITData record{in.ConsumeIntegralInRange<int32_t>(-1, int32_t(count)), apps.empty() ? nullptr : apps.data()};

    ref_ptr<AIT> ait(new AIT());
    if (ait->parse(record)) {
        const AITApplication* app = ait->getAITApplication(0u);
        for (const auto& transport : app->getTransports())
            transport->getURL(app->getApplicationLocation());
        app->getApplicationDomain()->isWithinBoundaries(in.ConsumeRandomLengthString(32));
    }
    return 0;
}
