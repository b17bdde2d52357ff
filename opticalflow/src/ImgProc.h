// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

#include "opticalflow/src/Imager.h"
#include "opticalflow/src/MultiProcessor.h"

namespace solvan_of {

/// Work on a texture in place, in passes over its rows.
class FnImgProc : protected FnMultiProcessor {
public:
    using FnMultiProcessor::FnMultiProcessor;
    using FnMultiProcessor::set_parallel;
    using FnMultiProcessor::set_pass_count;

    /// Rows and columns to work on in place of the whole target.
    void keep_rectangle(const TexRect& rectangle) {
        rectangle_ = rectangle;
        options_ |= kKeepsRectangle;
        flags_ |= kHasRectangle;
    }

    void set_rectangle_from(const FnTexIndexer& target);
    void grow_rectangle(std::int32_t margin);  ///< A margin of 0 or less leaves it.
    bool push_rectangle();                     ///< @return false where the stack is full
    bool pop_rectangle();
    const TexRect& rectangle() const { return rectangle_; }

    /// Null does nothing.
    void processImage(FnTexIndexer* target);

protected:
    PartRows rows_of(int part) const;
    template <class Body> void for_rows(int part, const Body& body) const {
        const PartRows rows = rows_of(part);
        for (std::int32_t line = rows.begin; line < rows.end && !interrupted(part); ++line) body(line);
    }

    static constexpr std::uint32_t kHasRectangle = 2;    // a flag
    static constexpr std::uint32_t kKeepsRectangle = 2;  // an option
    TexRect rectangle_;
    FnTexIndexer* target_ = nullptr;
    std::int32_t width_ = 0, height_ = 0;

private:
    std::array<TexRect, 10> saved_;
    std::size_t saved_count_ = 0;
};

/// With the textures that are worked on.
template <class Pixel> class FnImgProc1 : public FnImgProc {
public:
    using FnImgProc::FnImgProc;
    virtual void process(FnTexture<Pixel>* target) {
        first_ = target;
        processImage(target);
    }

protected:
    FnTexture<Pixel>* first_ = nullptr;
};

template <class Pixel, class Second = Pixel> class FnImgProc2 : public FnImgProc1<Pixel> {
public:
    using FnImgProc1<Pixel>::FnImgProc1;
    using FnImgProc1<Pixel>::process;
    virtual void process(FnTexture<Pixel>* target, FnTexture<Second>* second) {
        second_ = second;
        process(target);
    }

protected:
    FnTexture<Second>* second_ = nullptr;
};

template <class Pixel, class Second = Pixel, class Third = Second> class FnImgProc3 : public FnImgProc2<Pixel, Second> {
public:
    using FnImgProc2<Pixel, Second>::FnImgProc2;
    using FnImgProc2<Pixel, Second>::process;
    virtual void process(FnTexture<Pixel>* target, FnTexture<Second>* second, FnTexture<Third>* third) {
        third_ = third;
        this->process(target, second);
    }

protected:
    FnTexture<Third>* third_ = nullptr;
};

}  // namespace solvan_of
