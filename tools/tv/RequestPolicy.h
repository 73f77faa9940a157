#ifndef TESMO_TV_REQUESTPOLICY_H
#define TESMO_TV_REQUESTPOLICY_H

#include <string>
#include <vector>

// The platform's own word on what pages may request: shell patterns over the whole URL
// (--refuse). The answer to the library's request notification and the browser engine's
// filter both come from here.
class RequestPolicy {
public:
    explicit RequestPolicy(std::vector<std::string> patterns) : refused(std::move(patterns)) {}

    // The pattern that refuses url, or null.
    const std::string* refusing(const std::string& url) const;
    const std::vector<std::string>& patterns() const { return refused; }

private:
    std::vector<std::string> refused;
};

#endif
