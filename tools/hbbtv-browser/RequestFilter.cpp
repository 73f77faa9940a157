#include "RequestFilter.h"

#include <glib/gstdio.h>
#include <json-glib/json-glib.h>

namespace {

const char* const IDENTIFIER = "platform-refusals";
const char* const EVERY_URL = ".*";

// One blocking rule a URL expression, for WebSocket handshakes.
std::string rulesJson(const std::vector<std::string>& expressions)
{
    JsonBuilder* builder = json_builder_new();
    json_builder_begin_array(builder);
    for (const std::string& expression : expressions) {
        json_builder_begin_object(builder);
        json_builder_set_member_name(builder, "trigger");
        json_builder_begin_object(builder);
        json_builder_set_member_name(builder, "url-filter");
        json_builder_add_string_value(builder, expression.c_str());
        json_builder_set_member_name(builder, "url-filter-is-case-sensitive");
        json_builder_add_boolean_value(builder, TRUE);
        json_builder_set_member_name(builder, "resource-type");
        json_builder_begin_array(builder);
        for (const char* type : {"websocket"})
            json_builder_add_string_value(builder, type);
        json_builder_end_array(builder);
        json_builder_end_object(builder);
        json_builder_set_member_name(builder, "action");
        json_builder_begin_object(builder);
        json_builder_set_member_name(builder, "type");
        json_builder_add_string_value(builder, "block");
        json_builder_end_object(builder);
        json_builder_end_object(builder);
    }
    json_builder_end_array(builder);
    JsonNode* root = json_builder_get_root(builder);
    char* text = json_to_string(root, FALSE);
    const std::string json = text;
    g_free(text);
    json_node_unref(root);
    g_object_unref(builder);
    return json;
}

struct Compiling {
    WebKitUserContentFilter* filter = nullptr;
    bool done = false;
};

// The patterns as URL expressions; every URL when one of them has no exact expression.
std::vector<std::string> expressionsOf(const std::vector<std::string>& patterns)
{
    std::vector<std::string> expressions;
    for (const std::string& pattern : patterns) {
        expressions.push_back(RequestFilter::globToRule(pattern));
        if (expressions.back().empty()) {
            g_warning("the pattern %s has no exact WebSocket rule: every WebSocket is refused", pattern.c_str());
            return {EVERY_URL};
        }
    }
    return expressions;
}

}  // namespace

RequestFilter::RequestFilter(const std::vector<std::string>& refusedPatterns)
    : manager(webkit_user_content_manager_new())
{
    if (refusedPatterns.empty())
        return;
    char* made = g_dir_make_tmp("hbbtv-browser-rules-XXXXXX", nullptr);
    if (!made) {
        g_warning("no room for the platform's refusals: WebSockets are switched off");
        webSocketsOff = true;
        return;
    }
    directory = made;
    g_free(made);
    if (!compile(rulesJson(expressionsOf(refusedPatterns))) && !compile(rulesJson({EVERY_URL}))) {
        g_warning("the platform's refusals do not compile: WebSockets are switched off");
        webSocketsOff = true;
    }
}

// The rules into the views' content manager; false when WebKit does not take them.
bool RequestFilter::compile(const std::string& json)
{
    WebKitUserContentFilterStore* store = webkit_user_content_filter_store_new(directory.c_str());
    GBytes* source = g_bytes_new(json.data(), json.size());
    Compiling compiling;
    webkit_user_content_filter_store_save(
        store, IDENTIFIER, source, nullptr,
        [](GObject* from, GAsyncResult* result, gpointer data) {
            auto* state = static_cast<Compiling*>(data);
            GError* error = nullptr;
            state->filter =
                webkit_user_content_filter_store_save_finish(WEBKIT_USER_CONTENT_FILTER_STORE(from), result, &error);
            if (error)
                g_warning("the platform's refusals do not compile: %s", error->message);
            g_clear_error(&error);
            state->done = true;
        },
        &compiling);
    while (!compiling.done)
        g_main_context_iteration(nullptr, TRUE);
    if (compiling.filter) {
        webkit_user_content_manager_add_filter(manager, compiling.filter);
        webkit_user_content_filter_unref(compiling.filter);
    }
    g_bytes_unref(source);
    g_object_unref(store);
    return compiling.filter != nullptr;
}

RequestFilter::~RequestFilter()
{
    g_object_unref(manager);
    if (directory.empty())
        return;
    GDir* dir = g_dir_open(directory.c_str(), 0, nullptr);
    while (const char* name = dir ? g_dir_read_name(dir) : nullptr)
        g_unlink((directory + "/" + name).c_str());
    if (dir)
        g_dir_close(dir);
    g_rmdir(directory.c_str());
}

namespace {

// A range written backwards matches nothing for fnmatch, and is no expression at all.
bool hasBackwardRange(const std::string& members)
{
    for (size_t k = 0; k < members.size(); ++k) {
        if (k + 2 < members.size() && members[k + 1] == '-') {
            if (members[k + 2] < members[k])
                return true;
            k += 2;
        }
    }
    return false;
}

}  // namespace

std::string RequestFilter::globToRule(const std::string& glob)
{
    for (char c : glob)
        if (static_cast<unsigned char>(c) >= 0x80)
            return "";  // the rules know ASCII only
    std::string rule = "^";
    for (size_t i = 0; i < glob.size(); ++i) {
        const char c = glob[i];
        if (c == '*') {
            rule += ".*";
        } else if (c == '?') {
            rule += '.';
        } else if (c == '[') {
            // A set: "!" (or "^", as glibc's fnmatch reads it) negates it, and a "]" right after
            // the start is one of its members.
            const bool negated = i + 1 < glob.size() && (glob[i + 1] == '!' || glob[i + 1] == '^');
            const size_t first = i + 1 + negated;
            const size_t close = glob.find(']', first + 1);
            if (close == std::string::npos) {
                rule += "\\[";
                continue;
            }
            const std::string members = glob.substr(first, close - first);
            // Classes, collating symbols, equivalence classes and escapes in sets have no exact rule.
            if (members.find("[:") != std::string::npos || members.find("[.") != std::string::npos ||
                members.find("[=") != std::string::npos || members.find('\\') != std::string::npos ||
                hasBackwardRange(members))
                return "";
            rule += std::string("[") + (negated ? "^" : "");
            for (char member : members)
                rule += member == ']' || member == '^' ? std::string("\\") + member : std::string(1, member);
            rule += ']';
            i = close;
        } else if (c == '\\' && i + 1 == glob.size()) {
            return "";  // fnmatch matches nothing with a trailing backslash
        } else {
            const char literal = c == '\\' ? glob[++i] : c;
            if (std::string("\\^$.|+()[]{}*?").find(literal) != std::string::npos)
                rule += '\\';
            rule += literal;
        }
    }
    return rule + "$";
}
