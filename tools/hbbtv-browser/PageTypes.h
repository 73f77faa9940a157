#ifndef TESMO_BROWSER_PAGETYPES_H
#define TESMO_BROWSER_PAGETYPES_H

#include <string>

// The types HbbTV pages come as, and the type WebKit is given for them. WebKit shows XHTML
// and HTML, but not HbbTV's own XHTML type or CE-HTML; an XHTML page that is not well-formed
// XML is shown as HTML, as a TV shows it, never as a parser's error page.
class PageTypes {
public:
    // The media type without parameters, in lower case.
    static std::string essence(const std::string& contentType);
    // A type WebKit cannot show by itself but a TV does: the page is handed over as bytes.
    static bool needsHandOver(const std::string& contentType);
    // An XHTML-like type, whose bytes decide between XHTML and HTML.
    static bool isXhtml(const std::string& contentType);
    // What WebKit is told: XHTML when the bytes are well-formed XML, else HTML; other types
    // as they are.
    static std::string forEngine(const std::string& contentType, const std::string& bytes);
    // Well-formed as the XML parser WebKit itself uses judges it.
    static bool isWellFormedXml(const std::string& bytes);
};

#endif
