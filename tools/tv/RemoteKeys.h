#ifndef TESMO_TV_REMOTEKEYS_H
#define TESMO_TV_REMOTEKEYS_H

#include <cstdint>
#include <string>
#include <vector>

// The remote control's keys, one row each for every layer that names them: the keyboard
// keys that stand for it (X keysyms, which GDK's keyvals are), the name the options and
// scripts use, the receiver's key code that the library takes, what the page sees (the
// HbbTV VK_ constant and code, the DOM key and code values), and the key the browser engine
// is given. The engine has no remote-control keys: those it lacks it gets as F13 and up,
// and the page's events for them are given the remote's values.
struct RemoteKey {
    const char* name;
    int32_t receiverCode;
    const char* vkName;
    int vkCode;
    const char* domKey;
    const char* domCode;
    unsigned keyvals[2];  // 0 where there is none
    unsigned engineKeyval;
    // The keyCode the engine gives engineKeyval, where it is not vkCode already.
    int engineKeyCode() const;
};

const std::vector<RemoteKey>& remoteKeys();
const RemoteKey* remoteKeyByName(const std::string& name);
const RemoteKey* remoteKeyByReceiverCode(int32_t code);
const RemoteKey* remoteKeyByKeyval(unsigned keyval);

#endif
