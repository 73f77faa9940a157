#include "CarouselExtraction.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace carousel {

bool extractFile(const std::string& directory, const std::string& path, const std::string& content)
{
    // The directory the user named, with its parents.
    for (size_t end = directory.find('/', 1);; end = directory.find('/', end + 1)) {
        if (mkdir(directory.substr(0, end).c_str(), 0755) != 0 && errno != EEXIST)
            return false;
        if (end == std::string::npos)
            break;
    }
    for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        const std::string part = directory + path.substr(0, slash);
        struct stat info;
        if (mkdir(part.c_str(), 0755) != 0 &&
            (errno != EEXIST || lstat(part.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)))
            return false;
    }
    const std::string file = directory + path;
    unlink(file.c_str());
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    const bool written = write(fd, content.data(), content.size()) == ssize_t(content.size());
    return close(fd) == 0 && written;
}

}  // namespace carousel
