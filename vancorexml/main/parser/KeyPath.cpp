#include "vancorexml/main/parser/KeyPath.h"

#include <utility>

#include <xercesc/util/QName.hpp>

namespace {

constexpr std::size_t MostSteps = 63;

KeyPath::NameTest MakeTest(const xercesc::XercesNodeTest& node)
{
    KeyPath::NameTest test;
    test.allowsAnyNamespace = node.getType() == xercesc::XercesNodeTest::NodeType_WILDCARD;
    test.allowsAnyName = node.getType() != xercesc::XercesNodeTest::NodeType_QNAME;
    if (!test.allowsAnyNamespace)
        test.uri = node.getName()->getURI();
    if (!test.allowsAnyName)
        test.name = node.getName()->getLocalPart();
    return test;
}

KeyPath::Branch MakeBranch(const xercesc::XercesLocationPath& path)
{
    using xercesc::XercesStep;
    KeyPath::Branch branch;
    for (XMLSize_t i = 0; i < path.getStepSize(); ++i) {
        const XercesStep& step = *path.getStep(i);
        switch (step.getAxisType()) {
        case XercesStep::AxisType_DESCENDANT: branch.beginsAnywhere = true; break;
        case XercesStep::AxisType_CHILD: branch.steps.push_back(MakeTest(*step.getNodeTest())); break;
        case XercesStep::AxisType_ATTRIBUTE: branch.attribute = MakeTest(*step.getNodeTest()); break;
        default: break;  // "."
        }
    }
    return branch;
}

}  // namespace

bool KeyPath::NameTest::Matches(unsigned int otherUri, const XMLCh* otherName) const
{
    return (allowsAnyNamespace || uri == otherUri) && (allowsAnyName || name == otherName);
}

KeyPath::State KeyPath::Branch::Step(State state, unsigned int uri, const XMLCh* name) const
{
    State next = beginsAnywhere ? Start : 0;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const State bit = State{1} << i;
        if ((state & bit) != 0 && steps[i].Matches(uri, name))
            next |= bit << 1;
    }
    return next;
}

KeyPath::KeyPath(xercesc::XercesXPath& path)
{
    if (const auto* const paths = path.getLocationPaths()) {
        for (XMLSize_t i = 0; i < paths->size(); ++i) {
            Branch branch = MakeBranch(*paths->elementAt(i));
            if (branch.steps.size() <= MostSteps)
                m_branches.push_back(std::move(branch));
        }
    }
    Describe(path.getExpression());
}

void KeyPath::Describe(const XMLCh* expression)
{
    m_words = "a value at '" + VString(expression) + "'";
    if (m_branches.size() != 1 || m_branches[0].beginsAnywhere)
        return;
    const Branch& branch = m_branches[0];
    if (branch.steps.empty() && branch.attribute && !branch.attribute->allowsAnyName) {
        m_attributeName = VString(branch.attribute->name.c_str());
        m_words = "the attribute '" + m_attributeName + "'";
    } else if (branch.steps.size() == 1 && !branch.attribute && !branch.steps[0].allowsAnyName) {
        m_words = "the element '" + VString(branch.steps[0].name.c_str()) + "'";
    }
}
