#include "vanxml/SchemaSelection.h"

#include "tests/common/EndlessSource.h"
#include "tests/common/TestSupport.h"

TEST(SchemaSelectionTest, ReadsNoFurtherThanTheFirstTag)
{
    testsupport::EndlessSource source("<?xml version='1.0'?><captions version='18.1'>");
    EXPECT_EQ(SelectSchema(source).schema.name, VString("VQRC_FILEFORMAT_KXE_XSD"));
    EXPECT_EQ(source.blocks, 2);  // one for the type, one for the version
    EXPECT_TRUE(source.IsAtStart());
}
