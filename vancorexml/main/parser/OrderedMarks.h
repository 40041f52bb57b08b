// A list whose entries can be compared by position in constant time.
#pragma once

#include <cstdint>

// A list of marks that the caller owns. Each mark has a label; labels grow along the list, so
// comparing two labels compares two positions.
//
// Ownership: the list links marks but does not own them. A mark must not move while it is in
// the list. Remove it before it dies, unless Clear is the next operation on the list.
//
// Threads: one writer or many readers.
class OrderedMarks {
public:
    struct Mark {
        std::uint64_t label = 0;
        Mark* previous = nullptr;
        Mark* next = nullptr;
    };

    OrderedMarks() noexcept { Clear(); }
    OrderedMarks(const OrderedMarks&) = delete;
    OrderedMarks& operator=(const OrderedMarks&) = delete;

    // Inserts `mark` behind `position`. Amortised logarithmic in the number of marks: if no label is free
    // between the two neighbours, the labels around them are reassigned.
    void InsertAfter(Mark& position, Mark& mark) noexcept;
    void Append(Mark& mark) noexcept { InsertAfter(*m_back.previous, mark); }
    // Constant.
    static void Remove(Mark& mark) noexcept;
    // Removes all marks from the list without accessing them, so they may be dead already.
    void Clear() noexcept;

private:
    void RelabelAround(Mark& mark) noexcept;

    Mark m_front;
    Mark m_back;
};
