#ifndef TESMO_HBBTV_API_DAXOAITEVENT_H
#define TESMO_HBBTV_API_DAXOAITEVENT_H

#include "api/WindowEvent.h"
#include "si/AIT.h"
#include "support/ref_ptr.h"

namespace TesmoHbbTV {

// An XML AIT accepted from a page, activated at a later tick, never inside the
// notification that brought it.
class DAXOAITEvent : public WindowEvent {
public:
    DAXOAITEvent(Window* window, const ref_ptr<AIT>& ait) : WindowEvent(window), ait(ait) {}
    void execute() override;

private:
    ref_ptr<AIT> ait;
};

}  // namespace TesmoHbbTV

#endif
