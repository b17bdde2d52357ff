// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "pictures/Format.h"

namespace qx::pictures {

/// A TIFF file with its own error text; nothing of the library goes to standard error.
class TiffHandle {
public:
    TiffHandle() : options_(TIFFOpenOptionsAlloc()) {
        if (options_ == nullptr) throw std::bad_alloc();
        TIFFOpenOptionsSetErrorHandlerExtR(options_, note_error, this);
        TIFFOpenOptionsSetWarningHandlerExtR(options_, ignore, nullptr);
    }
    ~TiffHandle() {
        close();
        TIFFOpenOptionsFree(options_);
    }
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;
    void close() {
        if (tiff != nullptr) TIFFClose(tiff);
        tiff = nullptr;
    }
    /// Leaves the file as it is, for good: where the library had no memory for its tables, a close may fall over them.
    void abandon() { tiff = nullptr; }
    TIFFOpenOptions* options() { return options_; }
    std::string error() const { return error_; }  ///< of the library, empty when there is none
    /// Throws std::bad_alloc when the library has told of a fault that came from a want of memory. It may have gone on
    /// without what it had no memory for.
    void check_memory() const {
        if (short_of_memory_) throw std::bad_alloc();
    }

    TIFF* tiff = nullptr;

private:
    /// The last error is why the library has given up; it goes on after others, and calls some of them warnings.
    static int note_error(TIFF*, void* self, const char*, const char* format, va_list arguments) {
        auto& handle = *static_cast<TiffHandle*>(self);
        if (memory_ran_out()) handle.short_of_memory_ = true;
        char text[sizeof handle.error_];
        std::vsnprintf(text, sizeof text, format, arguments);
        if (std::strncmp(text, "Warning", 7) != 0) std::memcpy(handle.error_, text, sizeof text);
        return 1;
    }
    static int ignore(TIFF*, void*, const char*, const char*, va_list) { return 1; }

    TIFFOpenOptions* options_;
    char error_[200] = "";
    bool short_of_memory_ = false;
};

}  // namespace qx::pictures
