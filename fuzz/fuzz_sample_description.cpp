// make-sample's description reader and writer on any text. The description's directory
// holds a small carousel folder; whatever the description asks, the writer either refuses
// it or writes sections that read back as described: each service's AIT sections make a
// complete table, and its carousel gives back every file it names, byte for byte.

#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "ObjectCarousel.h"
#include "SampleWriter.h"
#include "si/AIT.h"

namespace {

const char* const FILES[][2] = {{"index.html", "<html><body>sample</body></html>"},
                                {"data/list.txt", "one\ntwo\nthree\n"},
                                {"app.js", nullptr}};  // a script of many blocks, made below

std::string fileContent(size_t index)
{
    return FILES[index][1] ? FILES[index][1] : std::string(3000, 'j');
}

void removeSampleDirectory();

// Made once per process, removed at exit.
const std::string& sampleDirectory()
{
    static const std::string directory = [] {
        char pattern[] = "/tmp/fuzz-sample-XXXXXX";
        const std::string root = mkdtemp(pattern);
        for (const char* folder : {"/carousel", "/carousel/data"})
            mkdir((root + folder).c_str(), 0700);
        for (size_t i = 0; i < sizeof FILES / sizeof FILES[0]; ++i)
            std::ofstream(root + "/carousel/" + FILES[i][0], std::ios::binary) << fileContent(i);
        return root;
    }();
    static const bool removedAtExit = std::atexit(removeSampleDirectory) == 0;
    (void)removedAtExit;
    return directory;
}

int removeEntry(const char* path, const struct stat*, int, FTW*)
{
    return remove(path);
}

void removeSampleDirectory()
{
    nftw(sampleDirectory().c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
}

std::string expectedContent(const std::string& path)
{
    for (size_t i = 0; i < sizeof FILES / sizeof FILES[0]; ++i)
        if (path == FILES[i][0])
            return fileContent(i);
    return "";
}

void checkService(const SampleService& service, const std::vector<PlayedUnit>& units)
{
    TesmoHbbTV::ref_ptr<TesmoHbbTV::AIT> ait(new TesmoHbbTV::AIT(1, 1, service.serviceId, nullptr));
    carousel::ObjectCarousel oc;
    for (const PlayedUnit& unit : units) {
        if (unit.pid == service.aitPid)
            ait->parse(unit.bytes.data());
        else if (service.carouselPid && unit.pid == service.carouselPid)
            oc.addSection(unit.bytes.data(), unit.bytes.size());
    }
    if (!ait->isComplete())
        std::abort();  // a written AIT that a receiver cannot take
    for (const SampleCarouselFile& file : service.carouselFiles) {
        std::string content;
        if (oc.file(file.path, content) != carousel::ObjectCarousel::Lookup::FOUND ||
            content != expectedContent(file.path))
            std::abort();  // a written carousel that does not give back what it was given
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    SampleDescription sample;
    std::string error;
    if (!parseDescriptionText(std::string(reinterpret_cast<const char*>(data), size), "fuzz", sample, error))
        return 0;
    sample.directory = sampleDirectory();
    for (SampleService& service : sample.services) {
        service.carouselFolder = "carousel";  // the fuzzer's files only
        service.avFile.clear();
    }
    SampleStream stream;
    if (!writeSample(sample, stream, error))
        return 0;
    for (const SampleService& service : sample.services)
        checkService(service, stream.units);
    return 0;
}
