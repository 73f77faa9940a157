#include "XmlAit.h"

#include <pugixml.hpp>

#include <cstdlib>
#include <cstring>

namespace {

// Element names are matched without their namespace prefix.
const char* localName(const pugi::xml_node& node)
{
    const char* name = node.name();
    const char* colon = std::strrchr(name, ':');
    return colon ? colon + 1 : name;
}

pugi::xml_node child(const pugi::xml_node& node, const char* name)
{
    for (pugi::xml_node c : node.children())
        if (std::strcmp(localName(c), name) == 0)
            return c;
    return {};
}

std::vector<pugi::xml_node> children(const pugi::xml_node& node, const char* name)
{
    std::vector<pugi::xml_node> found;
    for (pugi::xml_node c : node.children())
        if (std::strcmp(localName(c), name) == 0)
            found.push_back(c);
    return found;
}

// Every element of that name below node, at any depth.
void collect(const pugi::xml_node& node, const char* name, std::vector<pugi::xml_node>& out)
{
    for (pugi::xml_node c : node.children()) {
        if (std::strcmp(localName(c), name) == 0)
            out.push_back(c);
        collect(c, name, out);
    }
}

long number(const pugi::xml_node& node)
{
    return std::strtol(node.child_value(), nullptr, 0);
}

int32_t controlCode(const std::string& text)
{
    static const char* const names[] = {"AUTOSTART", "PRESENT", "DESTROY",  "KILL",
                                        "PREFETCH",  "REMOTE",  "DISABLED", "PLAYBACK_AUTOSTART"};
    for (int i = 0; i < 8; ++i)
        if (text == names[i])
            return i + 1;
    return 0;
}

int32_t visibility(const std::string& text)
{
    if (text == "VISIBLE_ALL")
        return 3;
    return text == "NOT_VISIBLE_USERS" ? 1 : 0;
}

bool isTrue(const pugi::xml_node& node)
{
    const std::string text = node.child_value();
    return text == "true" || text == "1";
}

}  // namespace

const char* XmlAit::keep(const std::string& text)
{
    strings.push_back(text);
    return strings.back().c_str();
}

bool XmlAit::load(const std::string& path, std::string& error)
{
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_file(path.c_str());
    if (!parsed) {
        error = "cannot read XML AIT " + path + ": " + parsed.description();
        return false;
    }
    std::vector<pugi::xml_node> found;
    collect(document, "Application", found);
    for (const pugi::xml_node& node : found) {
        applications.emplace_back();
        Application& app = applications.back();
        DAXO_AITApplication& r = app.record;
        if (pugi::xml_node name = child(node, "appName"))
            r.name = keep(name.child_value());
        const pugi::xml_node identifier = child(node, "applicationIdentifier");
        r.organisation_id = uint32_t(number(child(identifier, "orgId")));
        r.application_id = uint32_t(number(child(identifier, "appId")));
        const pugi::xml_node descriptor = child(node, "applicationDescriptor");
        r.control_code = controlCode(child(descriptor, "controlCode").child_value());
        r.visibility = visibility(child(descriptor, "visibility").child_value());
        r.service_bound = isTrue(child(descriptor, "serviceBound"));
        r.priority = int32_t(number(child(descriptor, "priority")));
        for (const pugi::xml_node& version : children(descriptor, "mhpVersion"))
            app.profiles.push_back(
                {uint16_t(number(child(version, "profile"))), uint8_t(number(child(version, "versionMajor"))),
                 uint8_t(number(child(version, "versionMinor"))), uint8_t(number(child(version, "versionMicro")))});
        for (const pugi::xml_node& transport : children(node, "applicationTransport")) {
            const std::string type = transport.attribute("xsi:type").value();
            DAXO_AITApplicationTransport t{};
            t.protocol_id = type.find("HTTPTransport") != std::string::npos ? 3 : 1;
            if (pugi::xml_node base = child(transport, "URLBase"))
                t.url_base = keep(base.child_value());
            if (pugi::xml_node tag = child(transport, "ComponentTag"))
                t.component_tag = uint8_t(std::strtol(tag.attribute("ComponentTag").value(), nullptr, 0));
            app.transports.push_back(t);
        }
        if (pugi::xml_node location = child(node, "applicationLocation"))
            r.location = keep(location.child_value());
        for (const pugi::xml_node& boundary : children(child(node, "applicationBoundary"), "BoundaryExtension"))
            app.boundaries.push_back(keep(boundary.child_value()));
        if (pugi::xml_node usage = child(child(node, "applicationUsageDescriptor"), "ApplicationUsage"))
            r.usage_type = std::strstr(usage.child_value(), "teletext") ? 1 : 0;
        r.num_profiles = int32_t(app.profiles.size());
        r.profiles = app.profiles.data();
        r.num_transports = int32_t(app.transports.size());
        r.transports = app.transports.data();
        r.num_boundaries = int32_t(app.boundaries.size());
        r.boundaries = app.boundaries.data();
        records.push_back(r);
    }
    data.num_applications = int32_t(records.size());
    data.applications = records.empty() ? nullptr : records.data();
    return true;
}
