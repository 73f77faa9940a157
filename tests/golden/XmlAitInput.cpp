#include "XmlAitInput.h"

namespace tesmo_test {

const char* XmlAitInput::text(const std::optional<std::string>& value)
{
    if (!value)
        return nullptr;
    strings.push_back(*value);
    return strings.back().c_str();
}

DAXO_AITData XmlAitInput::record()
{
    records.clear();
    for (Application& app : applications) {
        DAXO_AITApplication r{};
        r.name = text(app.name);
        r.organisation_id = app.organisationId;
        r.application_id = app.applicationId;
        r.control_code = app.controlCode;
        r.visibility = app.visibility;
        r.service_bound = app.serviceBound;
        r.priority = app.priority;
        r.num_profiles = int32_t(app.profiles.size());
        r.profiles = app.profilesMissing || app.profiles.empty() ? nullptr : app.profiles.data();
        transports.emplace_back();
        for (const Transport& t : app.transports)
            transports.back().push_back({t.protocol, text(t.urlBase), t.remote, t.onid, t.tsid, t.sid, t.componentTag});
        r.num_transports = int32_t(app.transports.size());
        r.transports = app.transportsMissing || app.transports.empty() ? nullptr : transports.back().data();
        r.location = text(app.location);
        boundaries.emplace_back();
        for (const std::optional<std::string>& b : app.boundaries)
            boundaries.back().push_back(text(b));
        r.num_boundaries = int32_t(app.boundaries.size());
        r.boundaries = boundaries.back().empty() ? nullptr : boundaries.back().data();
        r.usage_type = app.usageType;
        records.push_back(r);
    }
    return DAXO_AITData{declaredCount.value_or(int32_t(records.size())), records.empty() ? nullptr : records.data()};
}

}  // namespace tesmo_test
