#ifndef TESMO_BROWSER_PAGEOBJECT_H
#define TESMO_BROWSER_PAGEOBJECT_H

#include <json-glib/json-glib.h>

#include <functional>
#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "tesmo_hbbtv/browser_core.h"

// What every page object's methods get and give. A page calls "Object.method" with its
// arguments as a JSON array; the method answers with one JSON value.
struct PageContext {
    DAXO_TesmoWindow* window;
    long handle;      // the page's browser window as the library's bindings know it
    std::string url;  // the page's URL
    std::set<uintptr_t>* applications;  // the application ids the page was given (its view's)
};

// The page's arguments, read leniently as a script passes them: a missing or mistyped one
// reads as 0, false or "".
class Arguments {
public:
    explicit Arguments(JsonArray* array) : array(array) {}
    double number(unsigned index) const;
    bool boolean(unsigned index) const;
    std::string text(unsigned index) const;
    bool isNull(unsigned index) const;
    // An object argument's member, as a JSON node of the call (null when absent).
    JsonNode* member(unsigned index, const char* name) const;

private:
    JsonNode* at(unsigned index) const;
    JsonArray* array;  // borrowed
};

// Answers, each a new JSON node the caller owns.
namespace reply {
JsonNode* number(double value);
JsonNode* boolean(bool value);
JsonNode* text(const std::string& value);
JsonNode* null();
// {"result": result, "value": value}: a binding's result code with the number it wrote.
JsonNode* result(int result, double value);
// The object as a node; takes the caller's reference to it.
JsonNode* object(JsonObject* members);
} // namespace reply

// A number a page sent as a whole one; 0 for what no int holds (huge, not a number).
long wholeNumber(double value);

using PageMethod = std::function<JsonNode*(const PageContext& page, const Arguments& args)>;
using PageMethods = std::map<std::string, PageMethod>;

#endif
