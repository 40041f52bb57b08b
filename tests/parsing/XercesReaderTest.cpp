#include "vancorexml/main/parser/XercesReader.h"

#include <gtest/gtest.h>

#include <memory>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/BinMemInputStream.hpp>
#include <xercesc/util/StringPool.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

class Reader final : public XercesReader {
public:
    using XercesReader::GetGrammars;
    using XercesReader::XercesReader;
};

class XercesReaderTest : public testing::Test {
protected:
    XercesInitializer m_xerces;
};

TEST_F(XercesReaderTest, NumbersOfNewNamespacesFollowThoseOfTheSchemas)
{
    XercesMemory memory;
    xercesc::XMLGrammarPoolImpl schemas(&memory);
    xercesc::XMLStringPool& shared = *schemas.getURIStringPool();
    const unsigned int first = shared.addOrFind(u"urn:first");
    const unsigned int last = shared.addOrFind(u"urn:last");

    Reader reader(&schemas);
    xercesc::XMLStringPool& names = *reader.GetGrammars().getURIStringPool();
    EXPECT_EQ(names.addOrFind(u"urn:first"), first);
    const unsigned int own = names.addOrFind(u"urn:own");
    EXPECT_GT(own, last);
    EXPECT_EQ(names.addOrFind(u"urn:own"), own);
    EXPECT_EQ(names.getStringCount(), own);

    EXPECT_EQ(names.getId(u"urn:last"), last);
    EXPECT_EQ(names.getId(u"urn:own"), own);
    EXPECT_EQ(names.getId(u"urn:unknown"), 0u);
    EXPECT_TRUE(names.exists(u"urn:first"));
    EXPECT_TRUE(names.exists(u"urn:own"));
    EXPECT_FALSE(names.exists(u"urn:unknown"));
    EXPECT_TRUE(names.exists(first));
    EXPECT_TRUE(names.exists(own));
    EXPECT_FALSE(names.exists(0u));
    EXPECT_FALSE(names.exists(own + 1));
    EXPECT_EQ(VString(names.getValueForId(last)), VString("urn:last"));
    EXPECT_EQ(VString(names.getValueForId(own)), VString("urn:own"));
    EXPECT_EQ(shared.getStringCount(), last);
}

// Counts its objects.
class CountedStream final : public xercesc::BinMemInputStream {
public:
    CountedStream() : BinMemInputStream(reinterpret_cast<const XMLByte*>("<a/>"), 4) { ++count; }
    ~CountedStream() override { --count; }

    static inline int count = 0;
};

class CountedSource final : public xercesc::InputSource {
public:
    xercesc::BinInputStream* makeStream() const override { return new CountedStream; }
};

TEST_F(XercesReaderTest, ReaderOwnsTheStreamUntilItsNextParse)
{
    {
        Reader reader;
        reader.parse(CountedSource());
        EXPECT_LE(CountedStream::count, 1);
        reader.parse(CountedSource());
        EXPECT_LE(CountedStream::count, 1);
    }
    EXPECT_EQ(CountedStream::count, 0);
}

class MissingSource final : public xercesc::InputSource {
public:
    xercesc::BinInputStream* makeStream() const override { return nullptr; }
};

struct ErrorCounter : xercesc::DefaultHandler {
    void fatalError(const xercesc::SAXParseException&) override { ++count; }

    int count = 0;
};

TEST_F(XercesReaderTest, SourceWithoutAStreamIsAnErrorUnlessTheSourceAllowsIt)
{
    Reader reader;
    ErrorCounter errors;
    reader.setErrorHandler(&errors);
    MissingSource source;
    reader.parse(source);
    EXPECT_EQ(errors.count, 1);
    source.setIssueFatalErrorIfNotFound(false);
    reader.parse(source);
    EXPECT_EQ(errors.count, 1);
}

}  // namespace
