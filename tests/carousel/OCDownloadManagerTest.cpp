#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeWorld.h"
#include "LogCapture.h"
#include "carousel/OCDownloadManager.h"
#include "si/HbbTVDVBURL.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

class OCDownloadManagerTest : public ::testing::Test {
protected:
    void SetUp() override { FakeWorld::get().reset(); }
    void TearDown() override { FakeWorld::get().reset(); }
    FakeWorld& world() { return FakeWorld::get(); }

    OCDownloadManager downloads;
    void* id = reinterpret_cast<void*>(0x99);
};

TEST_F(OCDownloadManagerTest, EmptyFileAvailableAtOnceIsFinishedWithoutData)
{
    world().getFileResult = DSMCC_OK;
    world().mimeType = "image/png";
    EXPECT_EQ(downloads.startDownload(HbbTVDVBURL("dvb://1.2.3.4/a.png?x#y"), id), OCDownloadManager::DELIVERED);
    EXPECT_EQ(world().calls(), (std::vector<Call>{{"dsmcc_get_file", {"1.2.3.4/a.png", ptr(id)}},
                                                  {"dsmcc_get_mime_type", {ptr(id)}},
                                                  {"tm_protocol_set_mime_type", {ptr(id), "image/png"}},
                                                  {"dsmcc_read", {ptr(id)}},
                                                  {"tm_protocol_finished", {ptr(id), "200"}},
                                                  {"dsmcc_close_file", {ptr(id)}}}));
}

TEST_F(OCDownloadManagerTest, UnknownIdAndMimeFailureEndTheRequest)
{
    LogCapture log;
    world().getFileResult = DSMCC_UNKNOWN_ID;
    EXPECT_EQ(downloads.startDownload(HbbTVDVBURL("dvb://1.2.3.4/a"), id), OCDownloadManager::FAILED);
    EXPECT_TRUE(log.contains(LOG_LEVEL_WARN, "OCDownloadManager",
                             "Unexpected return code from dsmcc_get_file: DSMCC_UNKNOWN_ID"));

    world().reset();
    world().mimeTypeResult = DSMCC_FILE_ERROR_CODE;
    world().mimeType = "text/plain";  // handed over even so; must not leak
    EXPECT_FALSE(downloads.reportDownloadSucceeded(id));
    EXPECT_TRUE(log.contains(LOG_LEVEL_DEBUG, "OCDownloadManager", "dsmcc_get_mime_type != DSMCC_OK"));
    EXPECT_EQ(world().callsTo("tm_protocol_failed").size(), 1u);
}

TEST_F(OCDownloadManagerTest, ReadyReportDeliversAgainUntilStopped)
{
    EXPECT_EQ(downloads.startDownload(HbbTVDVBURL("dvb://1.2.3.4/a"), id), OCDownloadManager::PENDING);
    world().filePieces = {"x"};
    EXPECT_TRUE(downloads.reportDownloadSucceeded(id));
    EXPECT_TRUE(downloads.reportDownloadSucceeded(id));
    EXPECT_EQ(world().callsTo("tm_protocol_finished").size(), 2u);
    EXPECT_TRUE(downloads.stopDownload(id));
    EXPECT_FALSE(downloads.stopDownload(id));
    LogCapture log;
    EXPECT_FALSE(downloads.reportDownloadSucceeded(id));
    EXPECT_TRUE(log.contains(LOG_LEVEL_WARN, "OCDownloadManager", "Unknown id when reporting download success"));
    EXPECT_EQ(world().callsTo("tm_protocol_finished").size(), 2u);
}

}  // namespace
