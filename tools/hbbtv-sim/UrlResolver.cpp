#include "UrlResolver.h"

#include <vector>

namespace {

struct Parts {
    std::string scheme, authority, path, query, fragment;
    bool hasAuthority = false, hasQuery = false, hasFragment = false;
};

Parts split(const std::string& url)
{
    Parts p;
    std::string rest = url;
    const size_t colon = rest.find(':');
    const size_t firstDelimiter = rest.find_first_of("/?#");
    if (colon != std::string::npos && colon > 0 && (firstDelimiter == std::string::npos || colon < firstDelimiter)) {
        p.scheme = rest.substr(0, colon);
        rest = rest.substr(colon + 1);
    }
    const size_t hash = rest.find('#');
    if (hash != std::string::npos) {
        p.hasFragment = true;
        p.fragment = rest.substr(hash + 1);
        rest.resize(hash);
    }
    const size_t question = rest.find('?');
    if (question != std::string::npos) {
        p.hasQuery = true;
        p.query = rest.substr(question + 1);
        rest.resize(question);
    }
    if (rest.compare(0, 2, "//") == 0) {
        p.hasAuthority = true;
        const size_t slash = rest.find('/', 2);
        p.authority = rest.substr(2, slash == std::string::npos ? std::string::npos : slash - 2);
        rest = slash == std::string::npos ? "" : rest.substr(slash);
    }
    p.path = rest;
    return p;
}

bool startsWith(const std::string& text, const char* prefix)
{
    return text.rfind(prefix, 0) == 0;
}

void dropLastSegment(std::string& out)
{
    const size_t slash = out.rfind('/');
    out.erase(slash == std::string::npos ? 0 : slash);
}

// RFC 3986, 5.2.4, step by step on an input and an output buffer.
std::string removeDotSegments(std::string in)
{
    std::string out;
    while (!in.empty()) {
        if (startsWith(in, "../")) {
            in.erase(0, 3);
        } else if (startsWith(in, "./")) {
            in.erase(0, 2);
        } else if (startsWith(in, "/./")) {
            in.replace(0, 3, "/");
        } else if (in == "/.") {
            in = "/";
        } else if (startsWith(in, "/../")) {
            in.replace(0, 4, "/");
            dropLastSegment(out);
        } else if (in == "/..") {
            in = "/";
            dropLastSegment(out);
        } else if (in == "." || in == "..") {
            in.clear();
        } else {
            const size_t end = in.find('/', 1);
            out += in.substr(0, end);
            in.erase(0, end == std::string::npos ? in.size() : end);
        }
    }
    return out;
}

std::string merge(const Parts& base, const std::string& path)
{
    if (base.hasAuthority && base.path.empty())
        return "/" + path;
    const size_t slash = base.path.rfind('/');
    return (slash == std::string::npos ? "" : base.path.substr(0, slash + 1)) + path;
}

std::string join(const Parts& p)
{
    std::string url = p.scheme.empty() ? "" : p.scheme + ":";
    if (p.hasAuthority)
        url += "//" + p.authority;
    url += p.path;
    if (p.hasQuery)
        url += "?" + p.query;
    if (p.hasFragment)
        url += "#" + p.fragment;
    return url;
}

} // namespace

std::string resolveUrl(const std::string& base, const std::string& reference)
{
    const Parts b = split(base);
    Parts r = split(reference);
    Parts t;
    if (!r.scheme.empty()) {
        t = r;
        t.path = removeDotSegments(r.path);
    } else {
        t.scheme = b.scheme;
        if (r.hasAuthority) {
            t.hasAuthority = true;
            t.authority = r.authority;
            t.path = removeDotSegments(r.path);
            t.hasQuery = r.hasQuery;
            t.query = r.query;
        } else {
            t.hasAuthority = b.hasAuthority;
            t.authority = b.authority;
            if (r.path.empty()) {
                t.path = b.path;
                t.hasQuery = r.hasQuery || b.hasQuery;
                t.query = r.hasQuery ? r.query : b.query;
            } else {
                t.path = removeDotSegments(r.path[0] == '/' ? r.path : merge(b, r.path));
                t.hasQuery = r.hasQuery;
                t.query = r.query;
            }
        }
    }
    t.hasFragment = r.hasFragment;
    t.fragment = r.fragment;
    return join(t);
}
