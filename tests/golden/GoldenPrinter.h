#ifndef TESMO_HBBTV_TESTS_GOLDENPRINTER_H
#define TESMO_HBBTV_TESTS_GOLDENPRINTER_H

// Every observable result of parsing, as one canonical text: a table's flags, every entry
// field, transports with their URLs in failover order, boundary answers and the table's
// look-ups. The text is compared with committed golden files, so it holds no addresses.

#include <sstream>
#include <string>
#include <vector>

#include "SectionBuilder.h"
#include "XmlAitInput.h"

namespace TesmoHbbTV {
class AIT;
class AITApplication;
class AITApplicationTransport;
class ApplicationDomain;
}  // namespace TesmoHbbTV

namespace tesmo_test {

// Text with every byte outside printable ASCII, the quote and the backslash escaped.
std::string quoted(const std::string& text);

class GoldenPrinter {
public:
    // Feeds the sections, each in a block of exactly its bytes, into one table.
    void sections(const std::vector<Bytes>& sections);
    void xmlAit(XmlAitInput& input);
    void boundaryDescriptor(const Bytes& descriptor);

    std::string text() const { return out.str(); }

private:
    void table(const TesmoHbbTV::AIT& ait);
    void lookups(const TesmoHbbTV::AIT& ait);
    void application(const TesmoHbbTV::AITApplication& app);
    void descriptors(const TesmoHbbTV::AITApplication& app);
    void transports(const TesmoHbbTV::AITApplication& app);
    void transport(const TesmoHbbTV::AITApplicationTransport& transport, const std::string& location);
    void domain(const TesmoHbbTV::ApplicationDomain& domain, std::vector<std::string> probes);

    std::ostringstream out;
};

}  // namespace tesmo_test

#endif
