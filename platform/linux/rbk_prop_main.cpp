// rbk-prop: the host's properties from a shell.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <string>
#include <system_error>
#include <vector>

#include "platform/linux/environment.h"
#include "platform/linux/property_store.h"

namespace {

using rbk::platform::PropertyStore;

// Exit status: 0, or 1 once a problem has been told.
int end_with(const std::string& problem)
{
    if (problem.empty()) return 0;
    rbk::platform::complain(problem);
    return 1;
}

// Prints, and ends with the problem; output that is lost is one too.
int print_and_end(const std::string& text, const std::string& problem)
{
    const bool printed = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    const std::string loss = printed ? "" : "standard output: " + std::generic_category().message(errno);
    const int status = end_with(problem);
    return printed ? status : end_with(loss);
}

int print_one(const PropertyStore& store, const std::string& name, const std::string& default_value)
{
    const PropertyStore::Reading reading = store.get(name);
    const std::string value = reading.value.value_or("");
    const std::string line = (value.empty() ? default_value : value) + "\n";
    return print_and_end(reading.problem.empty() ? line : "", reading.problem);
}

int print_all(const PropertyStore& store)
{
    const PropertyStore::Listing listing = store.list();
    std::string lines;
    for (const auto& [name, value] : listing.values) lines.append(name).append("=").append(value).append("\n");
    return print_and_end(lines, listing.problem);
}

int set_one(const PropertyStore& store, const std::string& name, const std::string& value)
{
    // A list has a line for each property, and so has a file that people write.
    if (value.find_first_of("\r\n") != std::string::npos) return end_with(name + ": a value has no line ends");
    return end_with(store.set(name, value));
}

// The command line as the parser takes it, last word first. The third word is a value, never an option, though it may
// begin with a dash: the parser is told by the "--" that people would otherwise have to think of.
std::vector<std::string> words_of(int argc, char* argv[])
{
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (words.size() == 3 && (words[0] == "get" || words[0] == "set") && words[1] != "--")
        words.insert(words.begin() + 2, "--");
    std::reverse(words.begin(), words.end());
    return words;
}

int run(int argc, char* argv[])
{
    CLI::App app("Reads and writes the properties of this host, which rbk asks for.", "rbk-prop");
    app.require_subcommand(1);
    app.footer(
        "persist. and ro. names survive, all others live until the host boots again; a ro. name can be set once\n"
        "until it is unset. The files are in $RBK_HOME/properties. Exit status: 0, or 1 when something is "
        "refused or the output can't be written.");
    std::string name;
    std::string value;
    CLI::App* get = app.add_subcommand("get", "NAME [DEFAULT]: print a value, or the default where there is none");
    get->add_option("NAME", name)->required();
    get->add_option("DEFAULT", value, "taken for an empty value too");
    CLI::App* set = app.add_subcommand("set", "NAME VALUE: store a value");
    set->add_option("NAME", name)->required();
    set->add_option("VALUE", value)->required();
    CLI::App* unset = app.add_subcommand("unset", "NAME: forget a value");
    unset->add_option("NAME", name)->required();
    app.add_subcommand("list", "print all, a line each: NAME=VALUE");
    try {
        app.parse(words_of(argc, argv));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 1;
    }

    const PropertyStore store = PropertyStore::of_home();
    if (get->parsed()) return print_one(store, name, value);
    if (set->parsed()) return set_one(store, name, value);
    if (unset->parsed()) return end_with(store.unset(name));
    return print_all(store);
}

}  // namespace

int main(int argc, char* argv[])
{
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "rbk: %s\n", error.what());
        return 1;
    }
}
