#include "vancorexml/main/parser/OrderedMarks.h"

void OrderedMarks::InsertAfter(Mark& position, Mark& mark) noexcept
{
    if (position.next->label - position.label < 2)
        RelabelAround(position);
    mark.label = position.label + (position.next->label - position.label) / 2;
    mark.previous = &position;
    mark.next = position.next;
    position.next->previous = &mark;
    position.next = &mark;
}

void OrderedMarks::Remove(Mark& mark) noexcept
{
    mark.previous->next = mark.next;
    mark.next->previous = mark.previous;
}

void OrderedMarks::Clear() noexcept
{
    m_front.next = &m_back;
    m_back.previous = &m_front;
    // This label is above every range of labels, so there is always a gap behind the last mark of a range.
    m_back.label = std::uint64_t{1} << 63;
}

// Doubles a range of labels around the mark until the range is sparse, then spaces its marks
// evenly. A range of 2^i labels is sparse when it holds fewer than 1.5^i marks: the bound falls
// as ranges grow, which makes the cost of an insertion amortised logarithmic.
void OrderedMarks::RelabelAround(Mark& mark) noexcept
{
    Mark* first = &mark;
    Mark* last = first;
    const std::uint64_t label = first->label;
    std::uint64_t count = 1;
    double sparse = 1;
    for (int bits = 1; bits <= 63; ++bits) {
        sparse *= 1.5;
        const std::uint64_t size = std::uint64_t{1} << bits;
        const std::uint64_t low = label & ~(size - 1);
        const std::uint64_t high = low + (size - 1);
        for (; first->previous != &m_front && first->previous->label >= low; ++count)
            first = first->previous;
        for (; last->next != &m_back && last->next->label <= high; ++count)
            last = last->next;
        if (static_cast<double>(count) >= sparse || size / (count + 1) < 2)
            continue;
        const std::uint64_t step = size / (count + 1);
        std::uint64_t next = low;
        for (Mark* i = first; i != last->next; i = i->next)
            i->label = next += step;
        return;
    }
}
