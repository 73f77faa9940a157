#ifndef TESMO_TV_REMOTEKEYS_H
#define TESMO_TV_REMOTEKEYS_H

#include <cstdint>
#include <string>
#include <vector>

// The remote control's keys, one row each for every layer that names them: the keyboard
// keys that stand for it (X keysyms, which GDK's keyvals are), the name the options and
// scripts use, the receiver's key code that the library takes, and what the page sees (the
// HbbTV VK_ constant and code, the DOM key and code values).
struct RemoteKey {
    const char* name;
    int32_t receiverCode;
    const char* vkName;
    int vkCode;
    const char* domKey;
    const char* domCode;
    unsigned keyvals[2];  // 0 where there is none
};

const std::vector<RemoteKey>& remoteKeys();
const RemoteKey* remoteKeyByName(const std::string& name);
const RemoteKey* remoteKeyByReceiverCode(int32_t code);
const RemoteKey* remoteKeyByKeyval(unsigned keyval);

#endif
