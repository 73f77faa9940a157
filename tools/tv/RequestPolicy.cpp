#include "RequestPolicy.h"

#include <fnmatch.h>

const std::string* RequestPolicy::refusing(const std::string& url) const
{
    for (const std::string& pattern : refused)
        if (fnmatch(pattern.c_str(), url.c_str(), 0) == 0)
            return &pattern;
    return nullptr;
}
