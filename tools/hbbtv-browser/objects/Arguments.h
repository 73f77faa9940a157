#ifndef TESMO_BROWSER_ARGUMENTS_H
#define TESMO_BROWSER_ARGUMENTS_H

#include <json-glib/json-glib.h>

#include <string>

// A call's arguments, checked against the method's signature before it runs: each character
// is one argument, n a number, s a string, b a boolean, o an object, O an object or null.
// Arguments past the signature are not read.
class Arguments {
public:
    explicit Arguments(JsonArray* array) : array(array) {}
    // Empty when the arguments fit the signature, else what is wrong with them.
    std::string mismatch(const std::string& signature) const;

    double number(unsigned index) const;
    bool boolean(unsigned index) const;
    std::string text(unsigned index) const;
    bool isNull(unsigned index) const;
    // An object argument's member, as a JSON node of the call (null when absent).
    JsonNode* member(unsigned index, const char* name) const;
    // An object argument's member when it is a number, else otherwise.
    double numberMember(unsigned index, const char* name, double otherwise) const;
    // An object argument's member when it is a boolean, else false.
    bool booleanMember(unsigned index, const char* name) const;
    // An object argument's member when it is a string, else "".
    std::string textMember(unsigned index, const char* name) const;

private:
    JsonNode* at(unsigned index) const;
    JsonArray* array;  // borrowed
};

// A number a page sent as a whole one; 0 for what no int holds (huge, not a number).
long wholeNumber(double value);

#endif
