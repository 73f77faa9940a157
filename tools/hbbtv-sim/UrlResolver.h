#ifndef TESMO_HBBTV_SIM_URLRESOLVER_H
#define TESMO_HBBTV_SIM_URLRESOLVER_H

#include <string>

// Resolves a reference against a base URL as RFC 3986, section 5.2, does.
std::string resolveUrl(const std::string& base, const std::string& reference);

#endif
