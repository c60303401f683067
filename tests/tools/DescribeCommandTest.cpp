#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/TovrinProgram.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(DescribeCommand, PrintsDescriptionsAndTable) {
  const ChildResult result = TovrinWith("throwing_registration", {"describe"});
  EXPECT_EQ(result.status, 1);

  const ChildResult sound = TovrinWith("sound", {"describe"});
  EXPECT_EQ(sound.status, 0);
  EXPECT_THAT(sound.output, StartsWith("GetTovrinSDKVersion                  1.20.16.0\n"));
  EXPECT_THAT(sound.output, HasSubstr("\nGetModuleDependencies\n"));
  EXPECT_THAT(sound.output, HasSubstr("\nTYPE            Box "));
  EXPECT_THAT(sound.output, HasSubstr("\nPROCEDURE       Box.Add (Box,STRING) "));
  EXPECT_THAT(sound.output, HasSubstr("  sample_BoxAdd\n"));
}

TEST(DescribeCommand, PrintsOneJsonObjectWhenAsked) {
  const ChildResult result = TovrinWith("sound", {"describe", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output,
              StartsWith("{\"descriptions\":{\"GetTovrinSDKVersion\":\"1.20.16.0\","));
  EXPECT_THAT(
      result.output,
      HasSubstr("},\"entries\":[{\"kind\":\"TYPE\",\"name\":\"Box\",\"export\":"
                "\"sample_CreateBox\"},{\"kind\":\"CONST_FUNCTION\",\"result\":\"Box\","
                "\"name\":\"ToBox\",\"arguments\":[\"STRING\"],\"export\":\"sample_ToBox\"}"));
  EXPECT_THAT(result.output,
              HasSubstr("{\"kind\":\"PROCEDURE\",\"name\":\"Box.Add\",\"arguments\":[\"Box\","
                        "\"STRING\"],\"export\":\"sample_BoxAdd\"}"));
  EXPECT_EQ(result.output.substr(result.output.size() - 4), "}]}\n");
}

TEST(DescribeCommand, ShowsThe15TextsAndThe37EntriesOfTheOwnModule) {
  const ChildResult result = Tovrin({"describe"});
  ASSERT_EQ(result.status, 0);
  EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 15 + 1 + 37);
  EXPECT_THAT(result.output, HasSubstr("BOOLEAN Tessarin.Matches (Tessarin.List,STRING)"));
  EXPECT_THAT(result.output, HasSubstr("tovrin_module_TessarinSetIHost\n"));
}

}  // namespace
