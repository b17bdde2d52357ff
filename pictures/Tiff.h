// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

namespace qx::pictures {

/// A TIFF file with its own error text; nothing of the library goes to standard error.
class TiffHandle {
public:
    TiffHandle() : options_(TIFFOpenOptionsAlloc()) {
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
    TIFFOpenOptions* options() { return options_; }
    const std::string& error() const { return error_; }  ///< of the library, empty when there is none

    TIFF* tiff = nullptr;

private:
    /// The last error is why the library has given up; it goes on after others, and calls some of them warnings.
    static int note_error(TIFF*, void* self, const char*, const char* format, va_list arguments) {
        char text[200];
        std::vsnprintf(text, sizeof text, format, arguments);
        if (std::strncmp(text, "Warning", 7) != 0) static_cast<TiffHandle*>(self)->error_ = text;
        return 1;
    }
    static int ignore(TIFF*, void*, const char*, const char*, va_list) { return 1; }

    TIFFOpenOptions* options_;
    std::string error_;
};

}  // namespace qx::pictures
