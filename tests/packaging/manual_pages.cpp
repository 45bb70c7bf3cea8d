#include "tests/packaging/manual_pages.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

namespace {

constexpr std::array<std::string_view, 6> VOID_ELEMENTS{"meta", "link", "img", "br", "hr", "col"};

struct Entity {
    std::string_view name, text;
};
constexpr std::array<Entity, 5> ENTITIES{
    {{"amp;", "&"}, {"lt;", "<"}, {"gt;", ">"}, {"quot;", "\""}, {"nbsp;", "\u00a0"}}};

bool is_void(const std::string& name) {
    return std::find(VOID_ELEMENTS.begin(), VOID_ELEMENTS.end(), name) != VOID_ELEMENTS.end();
}

bool is_name_character(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == ':';
}

struct Reader {
    std::string_view text;
    Markup markup;
    Page page;
    size_t at = 0;
    std::vector<size_t> open;  // numbers of the elements that are not closed yet

    bool starts(std::string_view word) const { return text.substr(at).starts_with(word); }
    bool ended() const { return at >= text.size(); }

    void error(const std::string& what) {
        const auto lines = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n');
        page.errors.push_back("line " + std::to_string(lines + 1) + ": " + what);
    }

    std::string name() {
        const size_t begin = at;
        while (!ended() && is_name_character(text[at])) ++at;
        return std::string(text.substr(begin, at - begin));
    }

    void blanks() {
        while (!ended() && std::isspace(static_cast<unsigned char>(text[at]))) ++at;
    }

    // Steps over what stands up to the mark and over the mark itself.
    std::string_view until(std::string_view mark) {
        const size_t begin = at;
        const size_t end = text.find(mark, begin);
        if (end == std::string_view::npos) {
            error("no " + std::string(mark));
            at = text.size();
            return {};
        }
        at = end + mark.size();
        return text.substr(begin, end - begin);
    }

    // One character of running text or of an attribute.
    std::string character() {
        if (text[at] != '&') return std::string(1, text[at++]);
        ++at;
        for (const Entity& entity : ENTITIES)
            if (starts(entity.name)) {
                at += entity.name.size();
                return std::string(entity.text);
            }
        error("& without an entity that is known");
        return "&";
    }

    void start_tag() {
        Element element;
        element.name = name();
        if (element.name.empty()) error("< that begins no tag");
        bool closed = false;
        for (blanks(); !ended() && text[at] != '>'; blanks()) {
            if (starts("/>")) {
                closed = true;
                ++at;
                continue;
            }
            if (!attribute(element)) return;
        }
        if (ended()) return error("tag without end");
        ++at;
        const bool is_alone = markup == Markup::HTML ? is_void(element.name) : closed;
        if (markup == Markup::HTML && closed) error("/> in <" + element.name + ">");
        page.elements.push_back(std::move(element));
        if (!is_alone) open.push_back(page.elements.size() - 1);
    }

    bool attribute(Element& element) {
        const std::string key = name();
        if (key.empty() || !starts("=\"")) {
            error("attribute without a quoted value in <" + element.name + ">");
            until(">");
            return false;
        }
        at += 2;
        std::string value;
        while (!ended() && text[at] != '"') value += character();
        ++at;
        if (!element.attributes.emplace(key, value).second) error(key + " twice in <" + element.name + ">");
        return true;
    }

    void end_tag() {
        const std::string ending = name();
        if (ended() || text[at] != '>') error("</" + ending + " without >");
        ++at;
        if (open.empty() || page.elements[open.back()].name != ending) {
            error("</" + ending + "> closes " +
                  (open.empty() ? "nothing" : "<" + page.elements[open.back()].name + ">"));
            return;
        }
        open.pop_back();
    }

    void running_text() {
        if (text[at] == '>') error("> in running text");
        const bool outside = open.empty() && !std::isspace(static_cast<unsigned char>(text[at]));
        const std::string piece = character();
        if (outside) error("text outside of all elements");
        for (const size_t number : open) page.elements[number].text += piece;
    }

    void step() {
        if (starts("<!--")) {
            until("-->");
        } else if (starts("<!doctype ")) {
            at += 10;
            page.doctype = until(">");
        } else if (starts("</")) {
            at += 2;
            end_tag();
        } else if (starts("<")) {
            ++at;
            start_tag();
        } else {
            running_text();
        }
    }
};

}  // namespace

Page read_page(std::string_view text, Markup markup) {
    Reader reader{text, markup, {}, 0, {}};
    while (!reader.ended()) reader.step();
    reader.at = text.size();
    for (const size_t number : reader.open)
        reader.error("<" + reader.page.elements[number].name + "> is not closed");
    return std::move(reader.page);
}

std::string file_text(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<const Element*> elements_named(const Page& page, std::string_view name) {
    std::vector<const Element*> found;
    for (const Element& element : page.elements)
        if (element.name == name) found.push_back(&element);
    return found;
}

std::string attribute(const Element& element, const std::string& name) {
    const auto found = element.attributes.find(name);
    return found == element.attributes.end() ? "" : found->second;
}

std::set<std::string> ids_of(const Page& page, std::vector<std::string>& twice) {
    std::set<std::string> ids;
    for (const Element& element : page.elements) {
        const std::string id = attribute(element, "id");
        if (!id.empty() && !ids.insert(id).second) twice.push_back(id);
    }
    return ids;
}
