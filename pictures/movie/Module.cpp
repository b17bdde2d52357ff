// SPDX-License-Identifier: Apache-2.0
#include "pictures/movie/Module.h"

#include <cerrno>
#include <cstdio>

#include "pictures/movie/Decoder.h"
#include "pictures/movie/Encoder.h"
#include "pictures/movie/Still.h"

namespace qx::movie {
namespace {

void put(Words* words, const std::string& text) { std::snprintf(words->text, sizeof words->text, "%s", text.c_str()); }

/// Runs the work of a routine; no exception leaves the module. Where the system has refused memory that is the reason
/// of a failure, whatever the libraries make of it.
template <class Work> bool guarded(Words* words, const Work& work) {
    av_log_set_level(AV_LOG_QUIET);  // what matters comes back as a code
    errno = 0;
    try {
        work();
        return true;
    } catch (const BadChoice& failure) {
        put(words, failure.what());
        words->is_choice = true;
    } catch (const Failure& failure) {
        put(words, errno == ENOMEM ? "out of memory" : failure.what());
    } catch (const std::exception&) {
        put(words, "out of memory");
    }
    return false;
}

/// A movie that cannot be made with its audio is made without.
Encoder* make_encoder(const Settings& settings, Words* note) {
    std::string reason;
    try {
        auto* encoder = new Encoder(settings);
        put(note, encoder->note());
        return encoder;
    } catch (const BadChoice&) {
        throw;
    } catch (const Failure& failure) {
        if (settings.audio == nullptr || errno == ENOMEM) throw;
        reason = failure.what();
    }
    Settings silent = settings;
    silent.audio = nullptr;
    auto* encoder = new Encoder(silent);
    const std::string lacks = encoder->note().empty() ? "" : encoder->note() + "; ";
    put(note, lacks + "its audio is left out: " + reason);
    return encoder;
}

void* open(const Settings* settings, Words* words) {
    Encoder* encoder = nullptr;
    guarded(words, [&] { encoder = make_encoder(*settings, words); });
    return encoder;
}

int depth(const void* movie) { return static_cast<const Encoder*>(movie)->depth(); }

bool add(void* movie, const unsigned char* pixels, std::ptrdiff_t rowbytes, Words* words) {
    return guarded(words, [&] { static_cast<Encoder*>(movie)->add(pixels, rowbytes); });
}

bool finish(void* movie, Words* words) {
    return guarded(words, [&] { static_cast<Encoder*>(movie)->finish(); });
}

void drop(void* movie) { delete static_cast<Encoder*>(movie); }

void* open_reader(const char* file, int threads, std::int64_t most_bytes, Facts* facts, Words* words) {
    Decoder* decoder = nullptr;
    guarded(words, [&] {
        decoder = new Decoder(file, threads, most_bytes);
        *facts = decoder->facts();
    });
    return decoder;
}

const char* note(void* reader, int number) {
    const auto& notes = static_cast<Decoder*>(reader)->notes();
    const auto place = static_cast<std::size_t>(number);
    return place < notes.size() ? notes[place].c_str() : nullptr;
}

bool read(void* reader, std::int64_t frame, unsigned char* pixels, std::ptrdiff_t rowbytes, Words* words) {
    return guarded(words, [&] {
        std::string said;
        static_cast<Decoder*>(reader)->read(frame, pixels, rowbytes, said);
        put(words, said);
    });
}

void close(void* reader) { delete static_cast<Decoder*>(reader); }

void* open_still(StillKind kind, const unsigned char* bytes, std::int64_t count, std::int64_t most_bytes, Still* still,
                 Words* words) {
    DecodedStill* decoded = nullptr;
    guarded(words, [&] {
        decoded = new DecodedStill(kind, bytes, count, most_bytes);
        *still = decoded->facts;
    });
    return decoded;
}

bool read_still(void* still, unsigned char* pixels, std::ptrdiff_t rowbytes, Words* words) {
    return guarded(words, [&] { static_cast<DecodedStill*>(still)->read(pixels, rowbytes); });
}

void close_still(void* still) { delete static_cast<DecodedStill*>(still); }

}  // namespace
}  // namespace qx::movie

extern "C" __attribute__((visibility("default"))) const qx::movie::Routines* qx_movie_routines() {
    using namespace qx::movie;
    static const Routines routines{kVersion, &open, &depth, &add,        &finish,     &drop,       &open_reader,
                                   &note,    &read, &close, &open_still, &read_still, &close_still};
    return &routines;
}
