#include "si/ApplicationDomain.h"

#include "support/LogEntry.h"

namespace TesmoHbbTV {

namespace {

const int PROTOCOL_DVB = 3;

// Where the host starts for the first scheme the text contains; the scheme is assumed to
// stand at the start. npos when it contains none of them.
size_t hostStart(const std::string& text)
{
    if (text.find("http://") != std::string::npos)
        return 7;
    if (text.find("https://") != std::string::npos)
        return 8;
    if (text.find("dvb://") != std::string::npos)
        return 6;
    return std::string::npos;
}

}  // namespace

int ApplicationDomain::extractProtocol(const std::string& text)
{
    if (text.find("http://") != std::string::npos)
        return 1;
    if (text.find("https://") != std::string::npos)
        return 2;
    if (text.find("dvb://") != std::string::npos)
        return PROTOCOL_DVB;
    return 0;
}

std::string ApplicationDomain::extractHostName(const std::string& text)
{
    size_t start = hostStart(text);
    if (start == std::string::npos)
        start = 0;
    const size_t slash = text.find('/', start);
    std::string host = text.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
    return host.substr(0, host.find(':'));
}

std::string ApplicationDomain::removePath(const std::string& text)
{
    const size_t start = hostStart(text);
    if (start == std::string::npos)
        return text;
    const size_t slash = text.find('/', start);
    return slash == std::string::npos ? text : text.substr(0, slash);
}

void ApplicationDomain::parseSimpleApplicationBoundaryExtensionDescriptor(SectionReader descriptor)
{
    const size_t end = 2 + size_t(descriptor.peek(1));
    const unsigned count = descriptor.peek(2);
    if (count > 1)
        LogEntry(LOG_LEVEL_WARN, "ApplicationDomain")
            << "Boundary extension descriptor contains more than one extension. We'll just read the first one.";

    // Every extension is read in spite of the message. The bound lets an extension's last
    // byte lie one byte beyond the descriptor, as deployed signalling expects.
    size_t position = 3;
    for (unsigned i = 0; i < count; ++i) {
        SectionReader in = descriptor.at(position);
        const size_t length = in.u8();
        if (!in.ok() || position + length > end)
            return;
        std::string extension;
        in.appendTo(extension, length);
        if (!in.ok())
            return;
        addBoundaryExtension(extension);
        position += 1 + length;
    }
}

bool ApplicationDomain::addBoundaryExtension(const std::string& extension)
{
    if (extension.compare(0, 4, "dvb:") == 0) {
        boundaries.push_back(removePath(extension));
        return true;
    }
    const std::string host = extractHostName(extension);
    for (const std::string& boundary : boundaries)
        if (extractHostName(boundary) == host && extractProtocol(boundary) != PROTOCOL_DVB)
            return false;
    boundaries.push_back(removePath(extension));
    return true;
}

bool ApplicationDomain::extendDomain(const ApplicationDomain& other)
{
    if (&other == this)
        return false;
    bool extended = false;
    for (const std::string& boundary : other.boundaries) {
        LogEntry(LOG_LEVEL_DEBUG, "AppDom") << "Trying to extend with domain: " << boundary;
        if (addBoundaryExtension(boundary)) {
            LogEntry(LOG_LEVEL_DEBUG, "AppDom") << "  - Extended with domain: " << boundary;
            extended = true;
        }
    }
    return extended;
}

bool ApplicationDomain::isWithinBoundaries(const std::string& url) const
{
    for (const std::string& boundary : boundaries)
        if (url.compare(0, boundary.size(), boundary) == 0)
            return true;
    return false;
}

}  // namespace TesmoHbbTV
