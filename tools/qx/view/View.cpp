// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/view/View.h"

#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>

#include "pictures/OwnModule.h"
#include "tools/qx/Library.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/view/Answers.h"
#include "tools/qx/view/Browser.h"
#include "tools/qx/view/server/Module.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

constexpr std::uint64_t kUsualMemory = std::uint64_t{512} << 20;
constexpr auto kPause = std::chrono::milliseconds(20);  // between two looks for a signal
constexpr int kMostPort = 65535;
constexpr int kStepPatience = 500;  // milliseconds that a step of the work may take once a signal has come

const serve::Routines& routines() {
    void* const module = pictures::open_own_module(serve::kFileName);
    if (module == nullptr) throw WorkFailed(std::string("views need the module ") + ::dlerror());
    const auto entry = reinterpret_cast<serve::Entry>(::dlsym(module, serve::kEntryName));
    const serve::Routines* const found = entry != nullptr ? entry() : nullptr;
    if (found != nullptr && found->version == serve::kVersion) return *found;
    throw WorkFailed(std::string(serve::kFileName) + " is of another version than this command");
}

std::unique_ptr<serve::Server> open_server(int port) {
    std::string fault;
    auto server = routines().open(port, &fault);
    if (server) return server;
    const std::string remedy = port == 0 ? "" : "; without --port a free one is taken";
    throw WorkFailed("--port " + std::to_string(port) + ": " + fault + remedy);
}

/// What is wrong with options, before files are looked at; those of scenes are for scenes.
void check(const ViewOptions& options) {
    constexpr std::size_t most = Frames::kSides;
    if (options.inputs.size() > most) throw WrongUsage("at most two files are shown beside each other");
    depth_of(options.depth);
    if (!options.frames.empty()) value_of("--frames", [&] { return scene::frame_list(options.frames); });
    bool any_scene = false, any_frames = false;
    for (const std::string& input : options.inputs) {
        const SubjectKind kind = kind_of_subject(input);
        any_scene = any_scene || kind == SubjectKind::scene;
        any_frames = any_frames || kind != SubjectKind::picture;
    }
    const auto& c = options.colours;
    const bool has_colours = c.linearize || !c.space.empty() || !c.to.empty();
    const char* const only_scenes = has_colours              ? "--space, --linearize and --to are"
                                    : !options.depth.empty() ? "--depth is"
                                                             : nullptr;
    if (only_scenes != nullptr && !any_scene) throw WrongUsage(std::string(only_scenes) + " for scenes");
    if (!options.frames.empty() && !any_frames) throw WrongUsage("--frames is for scenes and clips");
    scene::ColourChoices ignored;
    c.apply(ignored);
}

/// The server at work. Requests end before what answers them.
class Serving {
public:
    Serving(std::unique_ptr<serve::Server> server, Answers& answers, Frames& frames)
        : server_(std::move(server)), frames_(frames) {
        server_->start([&answers](const HttpRequest& request) { return answers.answer(request); });
    }
    ~Serving() {
        frames_.stop();
        server_.reset();
    }
    Serving(const Serving&) = delete;
    Serving& operator=(const Serving&) = delete;

private:
    std::unique_ptr<serve::Server> server_;
    Frames& frames_;
};

/// The address is there for who waits for it, whatever standard output is.
void tell_address(const std::string& address) {
    std::printf("%s\n", address.c_str());
    finish_output();
}

}  // namespace

void view(const ViewOptions& options) {
    const int port = options.port.empty() ? 0 : whole_number("--port", options.port, 1, kMostPort);
    const std::uint64_t memory = options.memory.empty() ? kUsualMemory : memory_size("--memory", options.memory);
    check(options);
    set_patience(kStepPatience);  // nothing is written
    options.cache.apply();
    const Library library;
    host::EffectFolders folders(options.effect_folders);
    const SubjectOptions asked{options.depth, options.frames, options.colours, folders};
    std::mutex reading;
    std::vector<std::unique_ptr<Source>> sources;
    for (const std::string& input : options.inputs) {
        sources.push_back(std::make_unique<Source>(input, asked, reading));
    }
    auto server = open_server(port);
    Gate gate(server->port());
    Frames frames(memory);
    Answers answers(gate, sources, frames);
    const Serving serving(std::move(server), answers, frames);
    tell_address(gate.address());
    std::optional<Browser> browser;
    if (!options.no_open) browser.emplace(gate.address_to_open());
    while (!interrupted()) {
        if (browser) browser->look();
        std::this_thread::sleep_for(kPause);
    }
    say_error("interrupted");  // now, since the work may be ended in the middle
    throw EndedWith{kInterruptedStatus};
}

}  // namespace qx::tool
