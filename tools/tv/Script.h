#ifndef TESMO_TV_SCRIPT_H
#define TESMO_TV_SCRIPT_H

#include <cstdint>
#include <string>
#include <vector>

// A scenario: one action a line, each at the script's clock, which "tick N" moves on.
//   tick N                  let N ticks pass
//   key NAME                press a key for the running application
//   fail PATTERN            loads of matching URLs fail from now on (load-fail: the next load)
//   status PATTERN=CODE     loads of matching URLs finish with that HTTP status
//   service-change          the service is left (AIT withdrawn)
//   channel next|prev|ID    the viewer changes to another service of the capture
//   broadband on|off        the platform's broadband connection comes up or goes down
//   start-url URL           the platform starts a broadcast-independent application
//   terminate               the platform terminates the running application
//   create-application URL  the running application's page creates an application
//   destroy-application     the running application's page destroys its application
//   show | hide             the page shows or hides its application
//   xml-ait FILE            the page delivers an XML AIT
//   keyset VALUE            the page sets its key set
//   time-shift on|off       playback becomes time-shifted or live
//   low-memory              the platform reports low memory
struct ScriptAction {
    uint64_t tick;
    std::string verb;
    std::string argument;
    int line;
};

// False with a message naming the line when the file cannot be read or holds an unknown
// action.
bool loadScript(const std::string& path, std::vector<ScriptAction>& actions, std::string& error);

#endif
