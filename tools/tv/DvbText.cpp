#include "DvbText.h"

#include <glib.h>
#include <iconv.h>

#include <cerrno>
#include <vector>

namespace {

// The table selected by the leading bytes, and how many bytes the selection takes.
struct Table {
    std::string charset;
    size_t selectorLength;
};

Table selectTable(const std::string& text)
{
    static const char* const isoTables[] = {nullptr,      "ISO-8859-5",  "ISO-8859-6",  "ISO-8859-7",
                                            "ISO-8859-8", "ISO-8859-9",  "ISO-8859-10", "ISO-8859-11",
                                            nullptr,      "ISO-8859-13", "ISO-8859-14", "ISO-8859-15"};
    if (text.empty())
        return {"ISO_6937", 0};
    const auto first = static_cast<unsigned char>(text[0]);
    if (first >= 0x20)
        return {"ISO_6937", 0};  // the default table
    if (first >= 0x01 && first <= 0x0B && isoTables[first])
        return {isoTables[first], 1};
    if (first == 0x10 && text.size() >= 3)
        return {"ISO-8859-" + std::to_string(static_cast<unsigned char>(text[2])), 3};
    switch (first) {
    case 0x11:
        return {"UCS-2BE", 1};
    case 0x13:
        return {"GB2312", 1};
    case 0x14:
        return {"UCS-2BE", 1};
    case 0x15:
        return {"UTF-8", 1};
    default:
        return {"ISO_6937", 1};
    }
}

// Control codes of the DVB tables (emphasis on and off, line breaks) are left out.
std::string dropControlCodes(const std::string& text)
{
    std::string out;
    for (unsigned char c : text)
        if (!(c >= 0x80 && c <= 0x9F) || c == 0x8A)
            out += c == 0x8A ? '\n' : char(c);
    return out;
}

}  // namespace

std::string dvbTextToUtf8(const std::string& text)
{
    const Table table = selectTable(text);
    std::string body = text.substr(table.selectorLength);
    if (table.charset.compare(0, 4, "ISO_") == 0 || table.charset.compare(0, 4, "ISO-") == 0)
        body = dropControlCodes(body);
    iconv_t converter = iconv_open("UTF-8", table.charset.c_str());
    if (converter == reinterpret_cast<iconv_t>(-1))
        return validUtf8(body);  // a table iconv does not have: the bytes as far as they are text
    std::vector<char> out(body.size() * 4 + 8);
    char* in = body.data();
    size_t inLeft = body.size();
    char* outPtr = out.data();
    size_t outLeft = out.size();
    while (inLeft > 0) {
        if (iconv(converter, &in, &inLeft, &outPtr, &outLeft) != size_t(-1))
            continue;
        if (errno != EILSEQ && errno != EINVAL)
            break;
        ++in;  // a byte the table does not know is skipped
        --inLeft;
    }
    iconv_close(converter);
    return std::string(out.data(), outPtr);
}

std::string validUtf8(const std::string& bytes)
{
    gchar* valid = g_utf8_make_valid(bytes.data(), gssize(bytes.size()));
    std::string text(valid);
    g_free(valid);
    return text;
}

std::string letterCode(const uint8_t* bytes)
{
    std::string code(reinterpret_cast<const char*>(bytes), 3);
    for (char& c : code)
        if (c < 0x20 || c > 0x7E)
            c = '?';
    return code;
}
