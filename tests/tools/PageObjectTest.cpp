// The boundary every page call crosses: the arguments checked against the method's
// signature, and the reply's envelope.

#include <gtest/gtest.h>

#include "objects/Arguments.h"
#include "objects/Reply.h"

namespace {

// The arguments as a page sends them (a JSON array), parsed as the channel parses them.
class Parsed {
public:
    explicit Parsed(const char* json) : parser(json_parser_new())
    {
        JsonNode* root = json_parser_load_from_data(parser, json, -1, nullptr) ? json_parser_get_root(parser) : nullptr;
        array = root && JSON_NODE_HOLDS_ARRAY(root) ? json_node_get_array(root) : nullptr;
    }
    ~Parsed() { g_object_unref(parser); }
    Arguments args() const { return Arguments(array); }

private:
    JsonParser* parser;
    JsonArray* array = nullptr;
};

TEST(PageObjectTest, ArgumentsMustFitTheSignature)
{
    const struct {
        const char* signature;
        const char* arguments;
        const char* wrong;  // "" when they fit
    } cases[] = {
        {"", "[]", ""},
        {"", "[1, \"extra\"]", ""},  // past the signature: not read
        {"n", "[3]", ""},
        {"n", "[3.5]", ""},
        {"n", "[]", "argument 1 must be a number"},
        {"n", "[null]", "argument 1 must be a number"},  // undefined and NaN arrive as null
        {"n", "[\"3\"]", "argument 1 must be a number"},
        {"n", "[true]", "argument 1 must be a number"},
        {"s", "[\"\"]", ""},
        {"s", "[7]", "argument 1 must be a string"},
        {"b", "[false]", ""},
        {"b", "[0]", "argument 1 must be a boolean"},
        {"o", "[{}]", ""},
        {"o", "[[1]]", "argument 1 must be an object"},
        {"O", "[null]", ""},
        {"O", "[\"x\"]", "argument 1 must be an object or null"},
        {"nsb", "[1, \"u\", true]", ""},
        {"nsb", "[1, \"u\"]", "argument 3 must be a boolean"},
        {"snnn", "[\"e\", 1, null, 2]", "argument 3 must be a number"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.signature) + " " + c.arguments);
        EXPECT_EQ(Parsed(c.arguments).args().mismatch(c.signature), c.wrong);
    }
    EXPECT_EQ(Parsed("{\"not\": \"a list\"}").args().mismatch(""), "the arguments are not a list");
}

TEST(PageObjectTest, ArgumentsReadOnlyWhatTheyAre)
{
    const Parsed parsed(
        "[2147483648.5, \"text\", true, {\"n\": 4, \"s\": \"x\", \"wrong\": \"4\", \"b\": true}, null]");
    const Arguments args = parsed.args();
    EXPECT_EQ(args.number(0), 2147483648.5);
    EXPECT_EQ(wholeNumber(args.number(0)), 0) << "no int holds it";
    EXPECT_EQ(wholeNumber(-2147483648.0), -2147483648L);
    EXPECT_EQ(args.text(1), "text");
    EXPECT_EQ(args.number(1), 0);
    EXPECT_TRUE(args.boolean(2));
    EXPECT_EQ(args.numberMember(3, "n", -1), 4);
    EXPECT_EQ(args.numberMember(3, "wrong", -1), -1);
    EXPECT_EQ(args.numberMember(3, "absent", -1), -1);
    EXPECT_EQ(args.textMember(3, "s"), "x");
    EXPECT_TRUE(args.booleanMember(3, "b"));
    EXPECT_FALSE(args.booleanMember(3, "n")) << "a number is not a boolean";
    EXPECT_EQ(args.textMember(3, "n"), "");
    EXPECT_EQ(args.textMember(1, "s"), "") << "members of what is not an object";
    EXPECT_TRUE(args.isNull(4));
    EXPECT_TRUE(args.isNull(9));
}

TEST(PageObjectTest, EveryReplyHasOneEnvelope)
{
    EXPECT_EQ(Reply().json(), "{\"value\":null}");
    EXPECT_EQ(Reply(reply::number(17)).json(), "{\"value\":17.0}");
    EXPECT_EQ(Reply(reply::text("a\"b")).json(), "{\"value\":\"a\\\"b\"}");
    EXPECT_EQ(Reply(reply::objectWith("channel", reply::null())).json(), "{\"value\":{\"channel\":null}}");
    EXPECT_EQ(Reply::error("SecurityError", "no").json(),
              "{\"error\":{\"name\":\"SecurityError\",\"message\":\"no\"}}");
    EXPECT_EQ(Reply::error("InvalidStateError", "gone", 3).json(),
              "{\"error\":{\"name\":\"InvalidStateError\",\"message\":\"gone\",\"code\":3}}");

    Reply moved = Reply(reply::boolean(true));
    Reply taken = std::move(moved);
    EXPECT_EQ(taken.json(), "{\"value\":true}");
    EXPECT_EQ(taken.valueJson(), "true");
    EXPECT_TRUE(Reply::error("TypeError", "x").isError());
    EXPECT_EQ(Reply::error("TypeError", "x").valueJson(), "null");
}

}  // namespace
