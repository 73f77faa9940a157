// Which pages WebKit is handed over and as what type: a TV shows an XHTML page that is not
// well-formed as HTML, never as the parser's error page.

#include <gtest/gtest.h>

#include <string>

#include "PageTypes.h"

namespace {

const char* const HBBTV = "application/vnd.hbbtv.xhtml+xml";
const char* const CE_HTML = "application/ce-html+xml";
const char* const XHTML = "application/xhtml+xml";
const char* const XHTML_DOCTYPE = "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
                                  "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">";

TEST(PageTypesTest, Essence)
{
    const struct {
        const char* contentType;
        const char* essence;
    } cases[] = {
        {"text/html", "text/html"},
        {"Application/XHTML+XML", "application/xhtml+xml"},
        {"application/vnd.hbbtv.xhtml+xml; charset=UTF-8", "application/vnd.hbbtv.xhtml+xml"},
        {"  text/html ;charset=utf-8; q=1", "text/html"},
        {"text/html\t", "text/html"},
        {";charset=utf-8", ""},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(PageTypes::essence(c.contentType), c.essence) << '"' << c.contentType << '"';
}

TEST(PageTypesTest, KindsOfType)
{
    const struct {
        const char* contentType;
        bool handOver;  // WebKit does not show it by itself
        bool xhtml;  // the bytes decide between XHTML and HTML
    } cases[] = {
        {HBBTV, true, true},
        {"Application/VND.HbbTV.XHTML+XML; charset=utf-8", true, true},
        {CE_HTML, true, true},
        {" application/ce-html+xml ;x=y", true, true},
        {XHTML, false, true},
        {"application/xhtml+xml; charset=utf-8", false, true},
        {"text/html", false, false},
        {"application/xml", false, false},
        {"application/vnd.hbbtv.xhtml+xml-foo", false, false},
        {"application/xhtml", false, false},
        {"", false, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(PageTypes::needsHandOver(c.contentType), c.handOver) << c.contentType;
        EXPECT_EQ(PageTypes::isXhtml(c.contentType), c.xhtml) << c.contentType;
    }
}

TEST(PageTypesTest, TypeForTheEngine)
{
    const std::string wellFormed =
        std::string(XHTML_DOCTYPE) + "<html xmlns=\"http://www.w3.org/1999/xhtml\"><body/></html>";
    const std::string unclosed = "<html><body><p>Hello</body></html>";
    const struct {
        std::string contentType;
        std::string bytes;
        const char* type;
    } cases[] = {
        {HBBTV, wellFormed, XHTML},
        {HBBTV, unclosed, "text/html"},
        {std::string(CE_HTML) + "; charset=utf-8", wellFormed, XHTML},
        {CE_HTML, unclosed, "text/html"},
        {XHTML, wellFormed, XHTML},
        {XHTML, unclosed, "text/html"},
        {XHTML, "", "text/html"},
        // Other types are not the bytes' to decide, and keep their parameters.
        {"text/html; charset=iso-8859-1", unclosed, "text/html; charset=iso-8859-1"},
        {"text/html", wellFormed, "text/html"},
        {"image/png", "", "image/png"},
        {"", wellFormed, "application/octet-stream"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(PageTypes::forEngine(c.contentType, c.bytes), c.type) << c.contentType << " with " << c.bytes;
}

TEST(PageTypesTest, WellFormedXml)
{
    const struct {
        const char* what;
        std::string bytes;
        bool wellFormed;
    } cases[] = {
        {"empty", "", false},
        {"one element", "<html/>", true},
        {"a byte order mark", "\xef\xbb\xbf<html/>", true},
        {"only a byte order mark", "\xef\xbb\xbf", false},
        {"only a declaration", "<?xml version=\"1.0\"?>", false},
        {"text only", "Hello", false},
        {"an XHTML doctype, not loaded", std::string(XHTML_DOCTYPE) + "<html/>", true},
        {"an XHTML entity under the XHTML doctype", std::string(XHTML_DOCTYPE) + "<html>&nbsp;</html>", true},
        {"an XHTML entity without a doctype", "<html>&nbsp;</html>", false},
        {"the HTML doctype", "<!DOCTYPE html><html/>", true},
        {"an unclosed tag", "<html><body></html>", false},
        {"an unquoted attribute", "<html lang=en/>", false},
        {"two roots", "<a/><b/>", false},
        {"space before the declaration", " <?xml version=\"1.0\"?><a/>", false},
        {"a declared encoding", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xe9</a>", true},
        {"bytes that are not UTF-8", "<a>\xe9</a>", false},
        {"a NUL byte inside", std::string("<a>x\0y</a>", 10), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(PageTypes::isWellFormedXml(c.bytes), c.wellFormed) << c.what;
}

}  // namespace
