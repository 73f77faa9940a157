#include "PageReportObject.h"

PageReportObject::PageReportObject(ObjectServices& objectServices, std::chrono::milliseconds loadTimeout)
    : services(objectServices), clockStart(std::chrono::steady_clock::now())
{
    const double bound = double(loadTimeout.count());
    table = {
        {"Page.painted", "", QUIET, [this](const PageContext& page, const Arguments&) { return painted(page); }},
        {"Page.loadTimeout", "", QUIET,
         [bound](const PageContext&, const Arguments&) { return Reply(reply::number(bound)); }},
        {"Page.debug", "s", QUIET,
         [this](const PageContext& page, const Arguments& args) {
             services.say("the page in " + services.where(page) + " says: " + args.text(0));
             return Reply();
         }},
    };
}

void PageReportObject::started()
{
    clockStart = std::chrono::steady_clock::now();
}

void PageReportObject::tableCompleted()
{
    if (!tableSeen && !firstPaintSeen)
        started();
    tableSeen = true;
}

Reply PageReportObject::painted(const PageContext& page)
{
    if (!firstPaintSeen) {
        firstPaintSeen = true;
        const auto ms =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - clockStart);
        services.say("first paint in " + services.where(page) + ": " + std::to_string(ms.count()) + " ms after " +
                     (tableSeen ? "the AIT was complete" : "the start"));
    }
    return Reply();
}
