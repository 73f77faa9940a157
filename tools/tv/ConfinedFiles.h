#ifndef TESMO_TV_CONFINEDFILES_H
#define TESMO_TV_CONFINEDFILES_H

#include <cstddef>
#include <string>

// Files a page may read from a directory that stands for the carousel (--carousel DIR): only
// regular files that really lie inside it, whatever the URL says. The path is taken as a URL
// path: escapes are decoded, a query or fragment dropped, dot segments refused rather than
// followed, symbolic links resolved and held to the directory, and the size bounded.
class ConfinedFiles {
public:
    ConfinedFiles(std::string root, size_t maxBytes) : root(std::move(root)), maxBytes(maxBytes) {}

    // The file's bytes, or false with the reason.
    bool read(const std::string& urlPath, std::string& bytes, std::string& why) const;

private:
    static bool decode(const std::string& urlPath, std::string& path, std::string& why);

    std::string root;
    size_t maxBytes;
};

#endif
