#include "CapabilitiesObject.h"

namespace {

// The HbbTV 1.x profile fragments of the platform-profile bits.
struct ProfileFeature {
    uint16_t bit;
    const char* name;
};
const ProfileFeature FEATURES[] = {{0x0001, "+DL"}, {0x0002, "+PVR"}, {0x0004, "+RTSP"}};

}  // namespace

CapabilitiesObject::CapabilitiesObject(const Options& settings)
{
    const bool hbbtv121 = settings.hbbtv121;
    const uint16_t profiles = settings.profiles;
    table = {{"Capabilities.xml", "", QUIET, [hbbtv121, profiles](const PageContext&, const Arguments&) {
                  return Reply(reply::text(capabilitiesXml(hbbtv121, profiles)));
              }}};
}

std::string CapabilitiesObject::capabilitiesXml(bool hbbtv121, uint16_t profiles)
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
