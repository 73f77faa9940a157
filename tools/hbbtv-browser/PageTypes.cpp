#include "PageTypes.h"

#include <glib.h>
#include <libxml/parser.h>

#include <algorithm>

std::string PageTypes::essence(const std::string& contentType)
{
    std::string type = contentType.substr(0, contentType.find(';'));
    type.erase(std::remove_if(type.begin(), type.end(), [](char c) { return g_ascii_isspace(c); }), type.end());
    std::transform(type.begin(), type.end(), type.begin(), [](char c) { return g_ascii_tolower(c); });
    return type;
}

bool PageTypes::needsHandOver(const std::string& contentType)
{
    const std::string type = essence(contentType);
    return type == "application/vnd.hbbtv.xhtml+xml" || type == "application/ce-html+xml";
}

bool PageTypes::isXhtml(const std::string& contentType)
{
    return needsHandOver(contentType) || essence(contentType) == "application/xhtml+xml";
}

std::string PageTypes::forEngine(const std::string& contentType, const std::string& bytes)
{
    if (isXhtml(contentType))
        return isWellFormedXml(bytes) ? "application/xhtml+xml" : "text/html";
    return contentType.empty() ? "application/octet-stream" : contentType;
}

// No network, no DTD loading: only the bytes decide.
bool PageTypes::isWellFormedXml(const std::string& bytes)
{
    xmlParserCtxtPtr parser = xmlNewParserCtxt();
    if (!parser)
        return false;
    xmlDocPtr document = xmlCtxtReadMemory(parser, bytes.data(), int(std::min<size_t>(bytes.size(), 0x7FFFFFFF)),
                                           nullptr, nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    const bool wellFormed = document && parser->wellFormed;
    xmlFreeDoc(document);
    xmlFreeParserCtxt(parser);
    return wellFormed;
}
