// A strict reader of the manual's pages and drawings: what a browser would forgive is an error here.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

struct Element {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text;  // of itself and of all inside, with entities replaced
};

struct Page {
    std::vector<Element> elements;  // in the order of their start tags
    std::string doctype;
    std::vector<std::string> errors;  // each with its line
};

enum class Markup { HTML, SVG };

Page read_page(std::string_view text, Markup markup);

std::string file_text(const std::filesystem::path& path);

// The elements of that name.
std::vector<const Element*> elements_named(const Page& page, std::string_view name);

// The value, or an empty text.
std::string attribute(const Element& element, const std::string& name);

// All ids; one that is there twice is put into `twice`.
std::set<std::string> ids_of(const Page& page, std::vector<std::string>& twice);
