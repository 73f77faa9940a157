#ifndef TESMO_HBBTV_TESTS_GOLDENACTIVATION_H
#define TESMO_HBBTV_TESTS_GOLDENACTIVATION_H

// A table delivered through the exported C interface, as a platform and a browser core
// deliver it, and everything the library then does, as canonical text: every platform and
// browser-core call, every notification with its fields, and the window's boundary answers.
// Addresses are named in the order they first appear, so the text holds none.

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "SectionBuilder.h"
#include "XmlAitInput.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace tesmo_test {

struct Notice;

class GoldenActivation {
public:
    // The sections posted to the broadcast window; then the started page loads, or, with
    // loadsFail, every page opened fails with a 404 until nothing more is tried.
    void sections(const std::vector<Bytes>& sections, bool loadsFail);
    // A broadband application loads, then hands its page's XML AIT to the library.
    void xmlAit(XmlAitInput& input);

    std::string text() const { return out.str(); }

private:
    void start();
    void finish();
    void loadGrantedWindow(int16_t status = 200);
    void failEveryLoad();
    void printCalls();
    void printNotice(const Notice& notice);
    std::string name(const void* pointer);
    std::string name(const std::string& argument);

    HBBTV_Window* window = nullptr;
    std::vector<std::string> probes;
    std::map<std::string, std::string> names;
    std::ostringstream out;
};

}  // namespace tesmo_test

#endif
