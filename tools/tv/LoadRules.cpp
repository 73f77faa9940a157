#include "LoadRules.h"

#include <fnmatch.h>

bool LoadRules::shouldFail(const std::string& url)
{
    if (failNext) {
        failNext = false;
        return true;
    }
    for (const std::string& pattern : failPatterns)
        if (fnmatch(pattern.c_str(), url.c_str(), 0) == 0)
            return true;
    return false;
}

int LoadRules::statusFor(const std::string& url) const
{
    for (const StatusRule& rule : statusRules)
        if (fnmatch(rule.pattern.c_str(), url.c_str(), 0) == 0)
            return rule.code;
    return 200;
}
