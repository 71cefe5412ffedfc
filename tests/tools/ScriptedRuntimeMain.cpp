// Plays the runtime of local models: `serve`, `pull MODEL`, `list`, `rm MODEL` and `stop MODEL`, with the
// frames and the interface of the real one, and misbehaves as it is told. What it knows lies in the folder
// SCRIPTED_RUNTIME:
//
//   models       the installed models, one in a line; grows and shrinks
//   calls        what it was asked, one call in a line, with OLLAMA_HOST behind it
//   server       written by `serve`: process, parent, session, context length, open descriptors, one a line
//   script.json  what `serve` answers to chat requests (support/ModelScript.h)
//   requests     what `serve` was asked, one request in a line (ScriptedRequest::toJson)
//   pull-output  the bytes that `pull` prints instead of frames of its own
//   pull-holds   a percentage at which `pull` waits as long as the file says so
//   pull-hangs   if there, `pull` never ends by itself
//   pulling      the process of the last pull
//   partial      how far a pull came that was ended; the next one goes on there
//   fails        if there, everything but `serve` prints its content and ends with 1
//   silent       if there, `serve` ends at once

#include "support/ScriptedModel.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

fs::path folder()
{
    const char *path = std::getenv("SCRIPTED_RUNTIME");
    return path ? path : ".";
}

std::string environment(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

std::string content(const char *name)
{
    std::ifstream file(folder() / name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> models()
{
    std::istringstream text(content("models"));
    std::vector<std::string> names;
    for (std::string name; std::getline(text, name);)
        names.push_back(name);
    return names;
}

void save(const std::vector<std::string> &names)
{
    std::ofstream file(folder() / "models", std::ios::binary | std::ios::trunc);
    for (const std::string &name : names)
        file << name << '\n';
}

std::string withTag(const std::string &name)
{
    return name.find(':') == std::string::npos ? name + ":latest" : name;
}

/// Standard error in pieces of the size of the real program's buffer.
void print(std::string_view bytes)
{
    constexpr std::size_t buffer = 4096;
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, buffer);
        const ssize_t written = ::write(STDERR_FILENO, piece.data(), piece.size());
        if (written <= 0)
            std::_Exit(1);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::string frame(const std::vector<std::string> &lines, std::size_t linesBefore)
{
    std::string bytes = "\x1b[?2026h\x1b[?25l";
    for (std::size_t line = 1; line < linesBefore; ++line)
        bytes += "\x1b[A";
    bytes += "\x1b[1G";
    for (std::size_t line = 0; line < lines.size(); ++line)
        bytes += lines[line] + "\x1b[K" + (line + 1 < lines.size() ? "\n" : "");
    return bytes + "\x1b[?25h\x1b[?2026l";
}

std::string frameOfAPull(int percent)
{
    char layer[120];
    std::snprintf(layer, sizeof layer, "pulling 6a0746a1ec1a: %3d%% ▕████      ▏ %.1f GB/4.7 GB", percent,
                  4.7 * percent / 100);
    return frame({"pulling manifest", layer}, 2);
}

/// A number in a file; nothing without the file.
std::optional<int> number(const char *name)
{
    const std::string text = content(name);
    return text.empty() ? std::nullopt : std::optional(std::atoi(text.c_str()));
}

/// Looks again whenever something in the folder changes.
void waitWhile(const std::function<bool()> &holds)
{
    const int changes = ::inotify_init1(IN_CLOEXEC);
    ::inotify_add_watch(changes, folder().c_str(), IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE);
    alignas(inotify_event) char events[4096];
    while (holds())
        if (::read(changes, events, sizeof events) <= 0)
            std::_Exit(1);
    ::close(changes);
}

void printFrames()
{
    std::string bytes = frame({"pulling manifest ⠋"}, 0);
    for (int percent = number("partial").value_or(0); percent <= 100; ++percent) {
        bytes += frameOfAPull(percent);
        if (const auto hold = number("pull-holds"); hold && percent >= *hold) {
            print(std::exchange(bytes, {}));
            std::ofstream(folder() / "partial") << percent;
            waitWhile([percent] {
                const auto still = number("pull-holds");
                return still && percent >= *still;
            });
        }
    }
    fs::remove(folder() / "partial");
    print(bytes +
          frame({"pulling manifest", "pulling 6a0746a1ec1a: 100% ▕██████████▏ 4.7 GB", "success"}, 2) + '\n');
}

int pull(const std::string &model)
{
    std::ofstream(folder() / "pulling") << ::getpid() << '\n';
    if (const std::string told = content("pull-output"); !told.empty())
        print(told);
    else
        printFrames();
    waitWhile([] { return fs::exists(folder() / "pull-hangs"); });
    std::vector<std::string> names = models();
    std::erase(names, withTag(model));
    names.insert(names.begin(), withTag(model));
    save(names);
    return 0;
}

int list()
{
    std::cout << "NAME                ID              SIZE      MODIFIED\n";
    for (const std::string &name : models())
        std::cout << name << "    845dbda0ea48    4.7 GB    2 days ago\n";
    return 0;
}

int remove(const std::string &model)
{
    std::vector<std::string> names = models();
    if (std::erase(names, withTag(model)) == 0) {
        std::cerr << "Error: model '" << model << "' not found\n";
        return 1;
    }
    save(names);
    std::cout << "deleted '" << model << "'\n";
    return 0;
}

int stop(const std::string &model)
{
    const std::vector<std::string> names = models();
    if (std::find(names.begin(), names.end(), withTag(model)) != names.end())
        return 0;
    std::cerr << "Error: couldn't find model \"" << model << "\" to stop\n";
    return 1;
}

void tellServer()
{
    std::ofstream file(folder() / "server.new");
    file << ::getpid() << '\n' << ::getppid() << '\n' << ::getsid(0) << '\n';
    file << environment("OLLAMA_CONTEXT_LENGTH") << '\n';
    for (const auto &entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const fs::path target = fs::read_symlink(entry.path(), gone);
        // Not what this program has opened itself.
        if (!gone && target.string().find("server.new") == std::string::npos &&
            target.filename() != "requests" && target.string().find("/proc/") == std::string::npos)
            file << entry.path().filename().string() << ' ' << target.string() << '\n';
    }
    file.close();
    fs::rename(folder() / "server.new", folder() / "server");
}

/// Serves until it is killed, as the real one does.
int serve()
{
    if (fs::exists(folder() / "silent"))
        return 1;
    const std::string host = environment("OLLAMA_HOST");
    const std::string script = content("script.json");
    std::ofstream requests(folder() / "requests", std::ios::app);
    tellServer(); // before anybody can be answered, so that whoever is may read it
    try {
        const morvane::ScriptedModel model(
            script.empty() ? morvane::ModelScript{} : morvane::ModelScript::fromJson(script),
            static_cast<std::uint16_t>(std::stoi(host.substr(host.find(':') + 1))),
            [&requests](const morvane::ScriptedRequest &request) {
                requests << request.toJson() << std::endl;
            });
        for (;;)
            ::pause();
    } catch (const std::exception &error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}

} // namespace

int main(int count, char **arguments)
{
    const std::string command = count > 1 ? arguments[1] : "";
    const std::string model = count > 2 ? arguments[2] : "";
    std::ofstream(folder() / "calls", std::ios::app)
        << command << (model.empty() ? "" : " " + model) << ' ' << environment("OLLAMA_HOST") << '\n';
    if (command == "serve")
        return serve();
    if (fs::exists(folder() / "fails")) {
        print(content("fails"));
        return 1;
    }
    if (command == "pull")
        return pull(model);
    if (command == "list")
        return list();
    if (command == "rm")
        return remove(model);
    if (command == "stop")
        return stop(model);
    return 1;
}
