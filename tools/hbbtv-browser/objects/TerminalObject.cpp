#include "TerminalObject.h"

#include "TvPlatform.h"

namespace {

// The preferences of this TV's viewer and the identity the user agent carries.
const char* const LANGUAGE = "eng";
const char* const COUNTRY = "GBR";
const char* const VENDOR = "tesmo";
const char* const SOFTWARE_VERSION = "0.1.0";
const char* const HARDWARE_VERSION = "1.0";

// The HbbTV 1.x profile fragments of the platform-profile bits.
struct ProfileFeature {
    uint16_t bit;
    const char* name;
};
const ProfileFeature FEATURES[] = {{0x0001, "+DL"}, {0x0002, "+PVR"}, {0x0004, "+RTSP"}};

JsonNode* configuration(const PageContext&, const Arguments&)
{
    const Options& settings = TvPlatform::get().settings();
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

JsonNode* capabilities(const PageContext&, const Arguments&)
{
    const Options& settings = TvPlatform::get().settings();
    return reply::text(TerminalObject::capabilitiesXml(settings.hbbtv121, settings.profiles));
}

} // namespace

std::string TerminalObject::capabilitiesXml(bool hbbtv121, uint16_t profiles)
{
    std::string uiProfile = "OITF_HD_UIPROF+DVB_T";
    for (const ProfileFeature& feature : FEATURES)
        if (profiles & feature.bit)
            uiProfile += feature.name;
    return std::string("<profilelist>") + "<ui_profile name=\"" + uiProfile + "\">" +
           "<ext><parentalcontrol schemes=\"dvb-si\">true</parentalcontrol>" +
           (hbbtv121 ? "<clientMetadata type=\"dvb-si\">true</clientMetadata>" : "") + "</ext></ui_profile>" +
           "<audio_profile name=\"MPEG1_L3\" type=\"audio/mpeg\"/>" +
           "<audio_profile name=\"HEAAC\" type=\"audio/mp4\"/>" +
           "<video_profile name=\"MP4_AVC_SD_25_HEAAC\" type=\"video/mp4\"/>" +
           "<video_profile name=\"MP4_AVC_HD_25_HEAAC\" type=\"video/mp4\"/>" +
           "<video_profile name=\"TS_AVC_SD_25_HEAAC\" type=\"video/mpeg\"/>" +
           "<video_profile name=\"TS_AVC_HD_25_HEAAC\" type=\"video/mpeg\"/>" + "</profilelist>";
}

const PageMethods& TerminalObject::methods()
{
    static const PageMethods methods = {
        {"Terminal.configuration", configuration},
        {"Terminal.capabilities", capabilities},
    };
    return methods;
}
