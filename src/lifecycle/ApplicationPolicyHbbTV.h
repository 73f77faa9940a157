#ifndef TESMO_HBBTV_LIFECYCLE_APPLICATIONPOLICYHBBTV_H
#define TESMO_HBBTV_LIFECYCLE_APPLICATIONPOLICYHBBTV_H

#include <cstdint>

#include "lifecycle/ApplicationPolicy.h"

namespace TesmoHbbTV {

// One managed window at a time.
class ApplicationPolicyHbbTV : public ApplicationPolicy {
public:
    bool requestNewWindow() override
    {
        if (grantedWindows != 0)
            return false;
        grantedWindows = 1;
        return true;
    }
    void releaseWindow() override
    {
        if (grantedWindows >= 1)
            --grantedWindows;
    }

private:
    int32_t grantedWindows = 0;
};

}  // namespace TesmoHbbTV

#endif
