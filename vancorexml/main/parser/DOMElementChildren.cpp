#include "vancorexml/main/parser/DOMElementChildren.h"

#include <stdexcept>

#include "vancorexml/main/parser/DOMElement.h"

std::size_t DOMElementChildren::size() const noexcept
{
    return m_element->m_children.size();
}

bool DOMElementChildren::empty() const noexcept
{
    return m_element->m_children.empty();
}

DOMElement* DOMElementChildren::operator[](std::size_t position)
{
    return m_element->m_children[position].get();
}

const DOMElement* DOMElementChildren::operator[](std::size_t position) const
{
    return m_element->m_children[position].get();
}

DOMElement* DOMElementChildren::at(std::size_t position)
{
    if (position >= size())
        throw std::out_of_range("invalid vector subscript");
    return (*this)[position];
}

const DOMElement* DOMElementChildren::at(std::size_t position) const
{
    return const_cast<DOMElementChildren*>(this)->at(position);
}

DOMElementChildren::iterator DOMElementChildren::begin()
{
    return iterator(m_element->m_children.data());
}

DOMElementChildren::iterator DOMElementChildren::end()
{
    return iterator(m_element->m_children.data() + size());
}

DOMElementChildren::const_iterator DOMElementChildren::begin() const
{
    return const_iterator(m_element->m_children.data());
}

DOMElementChildren::const_iterator DOMElementChildren::end() const
{
    return const_iterator(m_element->m_children.data() + size());
}
