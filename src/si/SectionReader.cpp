#include "si/SectionReader.h"

namespace TesmoHbbTV {

void SectionReader::appendTo(std::string& out, size_t n)
{
    if (!take(n))
        return;
    out.append(reinterpret_cast<const char*>(cursor), n);
    cursor += n;
}

void SectionReader::appendTo(TailText& out, size_t n)
{
    if (!take(n))
        return;
    out.append(cursor, n);
    cursor += n;
}

}  // namespace TesmoHbbTV
