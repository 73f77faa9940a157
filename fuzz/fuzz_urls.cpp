// URL texts through the URL classes, resolved against each other with a stand-in for the
// browser core's resolver.

#include <fuzzer/FuzzedDataProvider.h>

#include <string>

#include "FakeWorld.h"
#include "si/ApplicationDomain.h"
#include "si/HbbTVCurrentAITDVBURL.h"
#include "si/HbbTVDVBURL.h"
#include "si/HbbTVURL.h"

using namespace TesmoHbbTV;

namespace {

std::string resolved;

// Joins the relative text to the base's directory; fails on an empty base.
int fakeResolve(const char* base, const char* relative, char** result)
{
    const std::string b = base;
    if (b.empty())
        return -1;
    resolved = b.substr(0, b.rfind('/') + 1) + relative;
    *result = resolved.empty() ? nullptr : &resolved[0];
    return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    tesmo_test::FakeWorld::get().resolveRelativeUrl = fakeResolve;
    const std::string first = in.ConsumeRandomLengthString(256);
    const std::string second = in.ConsumeRandomLengthString(256);

    HbbTVURL url(first);
    url.getFullUrl();
    url.getHostName();
    url.matches(second);
    url.addParameters(second);
    url.addAnchor(second, in.ConsumeBool());
    url.resolveRelativeUrl(HbbTVURL(second));

    HbbTVDVBURL dvb(first);
    dvb.resolveRelativeUrl(HbbTVURL(second));
    dvb.getHostName();

    HbbTVCurrentAITDVBURL current(first);
    if (current.isValid())
        current.getFullUrl();

    ApplicationDomain domain;
    domain.addBoundaryExtension(first);
    domain.addBoundaryExtension(second);
    domain.isWithinBoundaries(url.getFullUrl());
    tesmo_test::FakeWorld::get().reset();
    return 0;
}
