#include "RequestFilter.h"

#include <glib/gstdio.h>
#include <json-glib/json-glib.h>

namespace {

const char* const IDENTIFIER = "platform-refusals";

std::string rulesJson(const std::vector<std::string>& patterns)
{
    JsonBuilder* builder = json_builder_new();
    json_builder_begin_array(builder);
    for (const std::string& pattern : patterns) {
        json_builder_begin_object(builder);
        json_builder_set_member_name(builder, "trigger");
        json_builder_begin_object(builder);
        json_builder_set_member_name(builder, "url-filter");
        json_builder_add_string_value(builder, RequestFilter::globToRule(pattern).c_str());
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

} // namespace

RequestFilter::RequestFilter(const std::vector<std::string>& refusedPatterns) : manager(webkit_user_content_manager_new())
{
    if (refusedPatterns.empty())
        return;
    char* made = g_dir_make_tmp("hbbtv-browser-rules-XXXXXX", nullptr);
    if (!made)
        return;
    directory = made;
    g_free(made);
    WebKitUserContentFilterStore* store = webkit_user_content_filter_store_new(directory.c_str());
    const std::string json = rulesJson(refusedPatterns);
    GBytes* source = g_bytes_new(json.data(), json.size());
    Compiling compiling;
    webkit_user_content_filter_store_save(
        store, IDENTIFIER, source, nullptr,
        [](GObject* from, GAsyncResult* result, gpointer data) {
            auto* state = static_cast<Compiling*>(data);
            GError* error = nullptr;
            state->filter = webkit_user_content_filter_store_save_finish(WEBKIT_USER_CONTENT_FILTER_STORE(from), result, &error);
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

std::string RequestFilter::globToRule(const std::string& glob)
{
    std::string rule = "^";
    for (size_t i = 0; i < glob.size(); ++i) {
        const char c = glob[i];
        const size_t close = c == '[' ? glob.find(']', i + 2) : std::string::npos;
        if (c == '*') {
            rule += ".*";
        } else if (c == '?') {
            rule += '.';
        } else if (close != std::string::npos) {
            std::string set = glob.substr(i + 1, close - i - 1);
            if (set[0] == '!')
                set[0] = '^';
            rule += '[' + set + ']';
            i = close;
        } else {
            if (std::string("\\^$.|+()[]{}").find(c) != std::string::npos)
                rule += '\\';
            rule += c;
        }
    }
    return rule + "$";
}
