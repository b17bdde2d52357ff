// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <span>

#include "pictures/Watch.h"

namespace qx::scene {

/// What is left of a thing when it has been made, and waits for its turn.
using InTurn = std::function<void()>;

/// Makes things 0 to `count` - 1, up to `at_once` of them at a time on threads of the pool, and runs what `make` gives
/// back one at a time in their order, on any thread. What becomes of a fault or a stop is as if they were made one
/// after the other: the turn comes to all before it and to none behind it, whose work is stopped, and it is thrown. A
/// thing that could not be made beside others is made once more, alone, before that is a fault.
/// @param make   gets a watch of the thing's own, which stops with `watch` too
void in_order(int count, int at_once, pictures::Watch& watch,
              const std::function<InTurn(int index, pictures::Watch& watch)>& make);

/// The same of things in groups, each of which one thread makes one by one: those of a group share what was costly.
/// They do not wait for each other: a thing's turn comes when all before it are done.
/// @param ends      where each group ends, rising; the last one is the number of things
/// @param at_once   groups
void in_order(std::span<const int> ends, int at_once, pictures::Watch& watch,
              const std::function<InTurn(int index, pictures::Watch& watch)>& make);

}  // namespace qx::scene
