#ifndef TESMO_TV_LOADRULES_H
#define TESMO_TV_LOADRULES_H

#include <string>
#include <vector>

#include "Options.h"

// What the viewer told the TV about the network: loads of some URLs fail, others finish
// with an HTTP status. Both browser cores obey them; the script changes them as it runs.
class LoadRules {
public:
    explicit LoadRules(const Options& options) : failPatterns(options.failPatterns), statusRules(options.statusRules) {}

    void failFrom(const std::string& pattern) { failPatterns.push_back(pattern); }
    void failNextLoad() { failNext = true; }
    // The newest rule for a URL wins.
    void answer(const std::string& pattern, int status) { statusRules.insert(statusRules.begin(), {pattern, status}); }

    // Whether a load of the URL fails; the next load fails whatever its URL when asked to.
    bool shouldFail(const std::string& url);
    // 200 unless a rule says otherwise.
    int statusFor(const std::string& url) const;

private:
    std::vector<std::string> failPatterns;
    std::vector<StatusRule> statusRules;
    bool failNext = false;
};

#endif
