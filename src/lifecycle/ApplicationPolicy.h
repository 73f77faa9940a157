#ifndef TESMO_HBBTV_LIFECYCLE_APPLICATIONPOLICY_H
#define TESMO_HBBTV_LIFECYCLE_APPLICATIONPOLICY_H

namespace TesmoHbbTV {

// Whether the window manager may create another window.
class ApplicationPolicy {
public:
    virtual ~ApplicationPolicy() = default;
    virtual bool requestNewWindow() = 0;
    virtual void releaseWindow() = 0;
};

}  // namespace TesmoHbbTV

#endif
