#include "ConfigurationObject.h"

namespace {

const char* const LANGUAGE = "eng";
const char* const COUNTRY = "GBR";
const char* const VENDOR = "tesmo";
const char* const SOFTWARE_VERSION = "0.1.0";
const char* const HARDWARE_VERSION = "1.0";

}  // namespace

ConfigurationObject::ConfigurationObject(const Options& options) : settings(options)
{
    table = {{"Configuration.values", "", QUIET, [this](const PageContext&, const Arguments&) { return values(); }}};
}

Reply ConfigurationObject::values() const
{
    JsonObject* preferences = json_object_new();
    json_object_set_string_member(preferences, "preferredAudioLanguage", LANGUAGE);
    json_object_set_string_member(preferences, "preferredSubtitleLanguage", LANGUAGE);
    json_object_set_string_member(preferences, "preferredUILanguage", LANGUAGE);
    json_object_set_string_member(preferences, "countryId", COUNTRY);
    JsonObject* system = json_object_new();
    json_object_set_string_member(system, "vendorName", VENDOR);
    json_object_set_string_member(system, "modelName", settings.product.c_str());
    json_object_set_string_member(system, "softwareVersion", SOFTWARE_VERSION);
    json_object_set_string_member(system, "hardwareVersion", HARDWARE_VERSION);
    json_object_set_string_member(system, "releaseVersion", settings.hbbtv121 ? "1.2.1" : "1.1.1");
    JsonObject* both = json_object_new();
    json_object_set_object_member(both, "configuration", preferences);
    json_object_set_object_member(both, "localSystem", system);
    return reply::object(both);
}
