// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/Candidates.h"
#include "opticalflow/src/Texture.h"

namespace solvan_of {

/// A list of vectors for every pixel, all of them vectors of one field: entries are numbers of its pixels, each of
/// which stands in one list at most. So the lists of a field take one block of four numbers a pixel.
class CandidateLists {
public:
    /// Lists of a field, to be emptied. @return false where there is no memory
    bool begin(const FieldTexture& field);
    void empty_all() { empty_rows(0, height_); }
    void empty_rows(std::int32_t begin, std::int32_t end);

    bool is_empty(std::int32_t list) const { return lists_[list].count == 0; }
    void empty(std::int32_t list) { lists_[list].count = 0; }
    /// The field's pixel `entry` behind what the list has.
    void append(std::int32_t list, std::int32_t entry);
    /// The same, unless the list has such a vector.
    void append_new(std::int32_t list, std::int32_t entry) {
        if (is_empty(list) || !holds(list, field_[entry])) append(list, entry);
    }
    std::int32_t first(std::int32_t list) const { return lists_[list].head; }
    /// The list becomes that one entry, wherever else it stands.
    void become(std::int32_t list, std::int32_t entry) { lists_[list] = {entry, entry, 1}; }

    const HvVec2& vector(std::int32_t entry) const { return field_[entry]; }
    /// Entries in their order, as far as there is room.
    template <int Most> void add_to(std::int32_t list, Candidates<Most>& to) const {
        for (std::int32_t left = lists_[list].count, at = lists_[list].head; left > 0; --left, at = next_[at])
            to.add(field_[at]);
    }

private:
    bool holds(std::int32_t list, const HvVec2& v) const;

    struct List {
        std::int32_t head, tail, count;
    };
    EngineBlock<List> lists_;
    EngineBlock<std::int32_t> next_;
    const HvVec2* field_ = nullptr;
    std::int32_t width_ = 0, height_ = 0;
};

}  // namespace solvan_of
