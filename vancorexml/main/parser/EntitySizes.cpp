#include "vancorexml/main/parser/EntitySizes.h"

#include <algorithm>
#include <utility>

namespace {

using View = std::u16string_view;

std::uint64_t Add(std::uint64_t a, std::uint64_t b) noexcept
{
    return std::min(a + b, Expansion::Max);
}

// Returns the position behind the first `end` at or after `from`, or the length of the text.
std::size_t PositionBehind(View text, View end, std::size_t from)
{
    const std::size_t found = text.find(end, from);
    return found == View::npos ? text.size() : found + end.size();
}

// Returns the end of the comment, processing instruction or CDATA section that the "<" at `position` begins, or
// `position` if it begins none of them. Such markup contains no references.
std::size_t SkipMarkup(View text, std::size_t position)
{
    const View rest = text.substr(position);
    if (rest.starts_with(u"<!--"))
        return PositionBehind(text, u"-->", position + 4);
    if (rest.starts_with(u"<?"))
        return PositionBehind(text, u"?>", position + 2);
    if (rest.starts_with(u"<![CDATA["))
        return PositionBehind(text, u"]]>", position + 9);
    return position;
}

// Returns the length of the reference that the "&" or "%" at `position` begins, or 0 if it begins none. The
// search stops at the next "&" or "%", so a text full of them costs linear time.
std::size_t LengthOfReference(View text, std::size_t position)
{
    const std::size_t end = text.find_first_of(u";&%<>'\" ", position + 1);
    return end != View::npos && text[end] == u';' && end > position + 1 ? end + 1 - position : 0;
}

// Returns how many code units a character has. `number` is its code point in decimal digits, or in hexadecimal
// digits after an "x".
std::size_t LengthOfCharacter(View number)
{
    const bool isHexadecimal = number.starts_with(u'x');
    std::uint64_t code = 0;
    for (const char16_t digit : number.substr(isHexadecimal ? 1 : 0)) {
        const char16_t zero = digit >= u'a' ? u'a' - 10 : digit >= u'A' ? u'A' - 10 : u'0';
        code = Add(code * (isHexadecimal ? 16 : 10), static_cast<char16_t>(digit - zero));
        if (code > 0xFFFF)
            return 2;
    }
    return 1;
}

// Adds the expansion of an entity to the expansion of the entity that contains it.
void AddInner(Expansion& outer, const Expansion& inner) noexcept
{
    outer += inner;
    // Xerces also compares each name in `inner` with the name of the outer entity.
    outer.compared = Add(outer.compared, inner.names);
    outer.levels = std::max(outer.levels, inner.levels + 1);
}

bool IsPredefined(View name)
{
    return name == u"lt" || name == u"gt" || name == u"amp" || name == u"apos" || name == u"quot";
}

}  // namespace

Expansion& Expansion::operator+=(const Expansion& other) noexcept
{
    count = Add(count, other.count);
    text = Add(text, other.text);
    read = Add(read, other.read);
    names = Add(names, other.names);
    compared = Add(compared, other.compared);
    levels = std::max(levels, other.levels);
    markup = Add(markup, other.markup);
    return *this;
}

std::uint32_t EntitySizes::FindOrAddName(std::u16string_view name)
{
    const auto known = m_names.find(name);
    if (known != m_names.end())
        return known->second;
    m_entityOfName.push_back(None);
    return m_names.emplace(name, static_cast<std::uint32_t>(m_entityOfName.size() - 1)).first->second;
}

std::size_t EntitySizes::RecordReference(std::u16string_view text, std::size_t position, Entity& entity)
{
    const std::size_t length = LengthOfReference(text, position);
    if (length == 0)
        return 0;
    const View name = text.substr(position + 1, length - 2);
    std::size_t replacement = 0;
    if (m_kind == Kind::General && name.starts_with(u'#'))
        replacement = LengthOfCharacter(name.substr(1));
    else if (m_kind == Kind::General && IsPredefined(name))
        replacement = 1;
    else
        entity.names.push_back(FindOrAddName(name));
    entity.own.text -= length - replacement;
    return length;
}

std::size_t EntitySizes::Declare(std::u16string_view name, std::u16string_view text)
{
    Entity entity;
    entity.own = {1, text.size(), text.size(), name.size(), 0, 1};
    // The text of a parameter entity consists of declarations. Their quoted parts contain no references.
    const View special = m_kind == Kind::General ? View(u"&<") : View(u"%<'\"");
    bool hasMarkup = false;
    for (std::size_t i = text.find_first_of(special); i != View::npos; i = text.find_first_of(special, i)) {
        std::size_t end = i;
        if (text[i] == special[0])
            end += RecordReference(text, i, entity);
        else if (text[i] == u'<')
            end = SkipMarkup(text, i);
        else
            end = PositionBehind(text, text.substr(i, 1), i + 1);
        hasMarkup |= text[i] == u'<' && end == i;
        i = std::max(end, i + 1);
    }
    entity.own.markup = hasMarkup ? entity.own.text : 0;
    m_longest.text = std::max(m_longest.text, entity.own.text);
    m_longest.read = std::max(m_longest.read, entity.own.read);
    m_longest.names = std::max(m_longest.names, entity.own.names);
    m_longest.markup = std::max(m_longest.markup, entity.own.markup);
    m_entityOfName[FindOrAddName(name)] = m_entities.size();
    m_entities.push_back(std::move(entity));
    ++m_generation;
    return m_entities.size() - 1;
}

void EntitySizes::BeginVisit(std::size_t entity)
{
    Entity& opened = m_entities[entity];
    opened.all = opened.own;
    opened.circle = None;
    opened.state = State::Open;
    opened.generation = m_generation;
}

void EntitySizes::ComputeExpansion(std::size_t root)
{
    struct Step {
        std::size_t entity;
        std::size_t next;  // the index of the next reference to measure
    };
    std::vector<Step> open{{root, 0}};
    BeginVisit(root);
    while (!open.empty()) {
        Step& step = open.back();
        Entity& entity = m_entities[step.entity];
        const std::size_t inner = step.next < entity.names.size() ? m_entityOfName[entity.names[step.next]] : None;
        if (inner != None && StateOf(inner) == State::Unknown) {
            BeginVisit(inner);
            open.push_back({inner, 0});
            continue;
        }
        if (inner != None && (StateOf(inner) == State::Open || m_entities[inner].circle != None))
            entity.circle = inner;
        else if (inner != None)
            AddInner(entity.all, m_entities[inner].all);
        ++step.next;
        if (step.next >= entity.names.size() || entity.circle != None) {
            entity.state = State::Known;
            open.pop_back();
        }
    }
}

Expansion EntitySizes::Expand(std::size_t entity)
{
    if (StateOf(entity) == State::Unknown)
        ComputeExpansion(entity);
    Expansion sum;
    // Follows the circle until it reaches an entity for the second time.
    std::vector<bool> isOpen;
    std::uint64_t levelsAround = 0;
    for (; entity != None; entity = m_entities[entity].circle) {
        if (m_entities[entity].circle != None) {
            isOpen.resize(m_entities.size());
            if (isOpen[entity])
                break;
            isOpen[entity] = true;
        }
        Expansion part = m_entities[entity].all;
        part.levels += levelsAround++;
        sum += part;
    }
    return sum;
}
