// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/scoped_ptr.hpp>
#include <cstdint>
#include <vector>

#include "QX/world/QX_UnoBuffer.h"
#include "platform/TK_Memory.h"

/// Work on a rectangle of some target, which lazy tiles put off. Failures are thrown as ints.
class QX_EXPORT QX_LazyOperator : public TK_MemTrackedObject {
public:
    // The order of the virtual operations is part of the interface.
    virtual M_Vector2T<short> GetExtent() const = 0;  ///< the target's width and height
    virtual ~QX_LazyOperator();
    void DoIt(M_Rect rect) { DoItImp(rect); }

protected:
    virtual void DoItImp(const M_Rect& rect) = 0;
};

/// Fills a mask buffer, a deep one with all 16 bits of the value, any other with the low ones.
class QX_EXPORT QX_LazyFillUnoBufferOperator : public QX_LazyOperator {
public:
    /// Takes the buffer, which `new` made, out of `*buffer`. Throws 3 after a report where there is none.
    QX_LazyFillUnoBufferOperator(boost::scoped_ptr<QX_UnoBuffer>* buffer, std::uint16_t value);
    M_Vector2T<short> GetExtent() const override;
    QX_UnoBuffer* GetBuffer() const { return buffer_.get(); }

protected:
    void DoItImp(const M_Rect& rect) override;

private:
    boost::scoped_ptr<QX_UnoBuffer> buffer_;
    std::uint16_t value_;
};

/// Runs an operator for square tiles of its target, once for each that is asked for. One thread at a time.
class QX_EXPORT QX_LazyTiles {
public:
    /// Takes the operator out of `*op`. Throws 3 after a report for a size below 1 and where there is no operator,
    /// which leaves `*op`, and std::bad_alloc.
    QX_LazyTiles(short tile_size, boost::scoped_ptr<QX_LazyOperator>* op);

    /// Makes valid what of a rectangle, moved by the offset, lies in the target: one call of the operator for each run
    /// of neighbouring tiles of a row that are not. Tiles count as valid from before their call, whose exceptions
    /// pass through; later runs are not begun then.
    void MakeValid(const M_Rect& rect);
    void SetOffset(M_Vector2T<short> to) { offset = to; }
    QX_LazyOperator* GetOperator() const { return op.get(); }

protected:
    M_Vector2T<short> GetOffset() const { return offset; }
    /// In coordinates of the target.
    void MakeTargetValid(const M_LRect& rect);

private:
    void MakeRowValid(std::int32_t row, std::int32_t first, std::int32_t last, M_Vector2T<short> extent);

    boost::scoped_ptr<QX_LazyOperator> op;
    std::int16_t tile_size, tiles_x, tiles_y;
    std::vector<std::vector<bool>> valid;  ///< a row of bits for each row of tiles
    M_Vector2T<short> offset{0, 0};
};

/// Lazy tiles that can be switched off.
class QX_EXPORT QX_LazyTilesCondition : public QX_LazyTiles {
public:
    QX_LazyTilesCondition(short tile_size, boost::scoped_ptr<QX_LazyOperator>* op, bool condition);
    void SetCondition(bool to) { condition = to; }
    /// Nothing where the condition is false. The rectangle is the target's: it is not moved by the offset.
    void ConditionalMakeValid(const M_Rect& rect);

private:
    bool condition;
};
