// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "pictures/FileName.h"

namespace qx::pictures {

/// An open file to read, with its first bytes. What standard input gives is kept, so that it can be read as often as a
/// file. Throws Failure for what is missing, empty or a folder.
class InputFile {
public:
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    const std::string& path() const { return path_; }          ///< as the user names it
    const std::string& opened() const { return named_.file; }  ///< by which the system opens it
    const std::string& layer() const { return named_.layer; }  ///< of it that is asked for, see FileName
    std::FILE* stream() const { return stream_; }
    std::uint64_t bytes() const;                                 ///< its length
    bool holds(const std::string& magic, std::size_t at) const;  ///< among its first bytes
    bool begins_with(const std::string& magic) const { return holds(magic, 0); }
    unsigned byte(std::size_t at) const { return static_cast<unsigned char>(head_.at(at)); }  ///< 0 behind its end
    std::vector<unsigned char> contents() const;                                              ///< all of it

private:
    std::string path_;
    FileName named_;
    std::FILE* stream_;
    std::array<char, 16> head_{};
    std::size_t head_bytes_;
};

/// A file that is written under a temporary name beside its place, and takes its name when all went well.
/// For standard output it is a file without a name, whose bytes follow those of the ones before it.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    /// One in memory, which `path` is only the name of in messages. `finish` leaves the bytes in `bytes`.
    OutputFile(const std::string& path, std::string& bytes);
    ~OutputFile();  ///< removes what was not committed
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    const std::string& path() const { return path_; }
    const std::string& temporary() const { return temporary_; }  ///< what is written before `commit`
    std::FILE* stream() const { return stream_; }
    /// @return false on a failure, which is kept for `commit`
    bool write(const void* data, std::size_t bytes);
    bool seek(std::uint64_t place);
    std::uint64_t tell();
    bool failed() const { return error_ != 0; }
    /// Throws Failure if a write has failed, std::bad_alloc if that was for want of memory.
    void check() const;
    /// Hands all to the system and closes the file, which has its temporary name still. Throws as `check` does.
    void finish();
    /// Finishes the file if that has not been done, and gives it its name.
    void commit();

private:
    void note_error();
    void take_bytes();
    void open_nameless();
    void copy_to_standard_output();
    std::string path_, target_, temporary_;
    std::FILE* stream_ = nullptr;
    int error_ = 0;
    std::string* bytes_ = nullptr;  ///< of one in memory
};

/// Throws Failure where the folder of a file that is to be written is missing, or the file is one itself.
void check_folder(const std::string& path);

/// Puts all that was written to the file system of a path on its disk, names and contents, so that a power cut takes
/// nothing back. What cannot be done is left.
void flush_disk_of(const std::string& path) noexcept;

/// Removes files that processes of this machine have left unfinished beside `path` when they were killed.
void sweep_unfinished(const std::string& path) noexcept;

/// Removes the files that are being written, from any thread and from within a signal handler that ends the process.
void remove_unfinished() noexcept;

}  // namespace qx::pictures
