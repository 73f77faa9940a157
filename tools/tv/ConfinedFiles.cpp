#include "ConfinedFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <memory>

namespace {

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string resolved(const std::string& path)
{
    std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real ? real.get() : "";
}

}  // namespace

// Percent-escapes decoded segment by segment, so that an escaped slash cannot join two.
bool ConfinedFiles::decode(const std::string& urlPath, std::string& path, std::string& why)
{
    const std::string plain = urlPath.substr(0, urlPath.find_first_of("?#"));
    size_t start = 0;
    while (start <= plain.size()) {
        const size_t slash = std::min(plain.find('/', start), plain.size());
        std::string segment;
        for (size_t i = start; i < slash; ++i) {
            if (plain[i] == '%' && i + 2 < slash && hexValue(plain[i + 1]) >= 0 && hexValue(plain[i + 2]) >= 0) {
                segment += char(hexValue(plain[i + 1]) << 4 | hexValue(plain[i + 2]));
                i += 2;
            } else {
                segment += plain[i];
            }
        }
        if (segment == ".." || segment.find('/') != std::string::npos || segment.find('\0') != std::string::npos) {
            why = "a path that would leave the directory";
            return false;
        }
        if (!segment.empty() && segment != ".")
            path += (path.empty() ? "" : "/") + segment;
        start = slash + 1;
    }
    if (path.empty()) {
        why = "no file named";
        return false;
    }
    return true;
}

bool ConfinedFiles::read(const std::string& urlPath, std::string& bytes, std::string& why) const
{
    std::string relative;
    if (!decode(urlPath, relative, why))
        return false;
    const std::string top = resolved(root);
    const std::string file = resolved(root + "/" + relative);
    if (top.empty() || file.empty() || file.compare(0, top.size() + 1, top + "/") != 0) {
        why = file.empty() ? "no such file" : "a file outside the directory";
        return false;
    }
    const int fd = open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat info;
    if (fd < 0 || fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || size_t(info.st_size) > maxBytes) {
        why = fd < 0 ? "no such file" : !S_ISREG(info.st_mode) ? "not a regular file" : "a file over the size bound";
        if (fd >= 0)
            close(fd);
        return false;
    }
    bytes.resize(size_t(info.st_size));
    size_t done = 0;
    for (ssize_t n; done < bytes.size() && (n = ::read(fd, &bytes[done], bytes.size() - done)) > 0;)
        done += size_t(n);
    close(fd);
    bytes.resize(done);
    return true;
}
