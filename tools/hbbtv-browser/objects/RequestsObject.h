#ifndef TESMO_BROWSER_REQUESTSOBJECT_H
#define TESMO_BROWSER_REQUESTSOBJECT_H

#include "BroadcastPicture.h"
#include "PageObject.h"
#include "RequestPolicy.h"

// Every request a page's engine makes, put to the library's request notification and the
// platform's policy before it leaves (the engine asks for each); and the bounds the page's
// own requests keep (its script). No page reaches the TV's own picture server.
class RequestsObject : public PageObject {
public:
    RequestsObject(ObjectServices& services, const RequestPolicy& policy, const BroadcastPicture& pictures);

private:
    Reply vet(const PageContext& page, const Arguments& args) const;
    Reply refuse(const PageContext& page, const std::string& url, const std::string& why) const;

    ObjectServices& services;
    const RequestPolicy& policy;
    const BroadcastPicture& pictures;
};

#endif
