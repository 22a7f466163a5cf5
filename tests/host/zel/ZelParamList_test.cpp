#include "ZelParamList.h"

#include <gtest/gtest.h>

TEST(ZelParamList, AFullListRefusesAnotherParameter)
{
    ZEL_ParamList* list = ZEL_ParamListCreate(1, 1);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(ZEL_ParamListAddString(list, "configstore"), ORV_OK);
    EXPECT_EQ(ZEL_ParamListAddString(list, "second"), ORV_LIMIT_EXCEEDED);
    EXPECT_EQ(ZEL_ParamListAddInt(list, 2), ORV_LIMIT_EXCEEDED);
    EXPECT_EQ(list->Text(0), "configstore");
    ZEL_ParamListDestroy(list);
}

TEST(ZelParamList, KeepsACopyOfTheText)
{
    ZEL_ParamList* list = ZEL_ParamListCreate(0, 2);
    std::string text = "first";
    EXPECT_EQ(ZEL_ParamListAddString(list, text.c_str()), ORV_OK);
    text = "other";
    EXPECT_EQ(list->Text(0), "first");
    ZEL_ParamListDestroy(list);
}

TEST(ZelParamList, NullListsTextsAndNegativeCapacitiesAreRefused)
{
    EXPECT_EQ(ZEL_ParamListCreate(0, -1), nullptr);
    EXPECT_EQ(ZEL_ParamListAddString(nullptr, "x"), ORV_BAD_PARAM);
    EXPECT_EQ(ZEL_ParamListAddInt(nullptr, 1), ORV_BAD_PARAM);
    ZEL_ParamList* list = ZEL_ParamListCreate(0, 1);
    EXPECT_EQ(ZEL_ParamListAddString(list, nullptr), ORV_BAD_PARAM);
    ZEL_ParamListDestroy(list);
    ZEL_ParamListDestroy(nullptr);
}
