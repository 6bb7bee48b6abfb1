// What requests' targets say.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "server/incoming.h"

using RecView::decodeTarget;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

std::string problemWith(const std::string& target)
{
    std::string problem;
    EXPECT_FALSE(decodeTarget(target, problem).has_value()) << target;
    return problem;
}

}  // namespace

TEST(RequestTarget, PathAndQueryAreDecoded)
{
    std::string problem;
    const auto target = decodeTarget("/api/a%20b+c?recording=N%C3%A4chte+1&empty=&flag&x=a%26b%3D", problem);
    ASSERT_TRUE(target.has_value()) << problem;
    EXPECT_EQ(target->path, "/api/a b+c");
    EXPECT_THAT(target->query, ElementsAre(Pair("empty", ""), Pair("flag", ""),
                                           Pair("recording",
                                                "N\xC3\xA4"
                                                "chte 1"),
                                           Pair("x", "a&b=")));
}

TEST(RequestTarget, ANameThatStandsTwiceIsRefusedHoweverItIsWritten)
{
    EXPECT_THAT(problemWith("/api/view?type=1&type=2"), HasSubstr("\"type\" stands twice"));
    EXPECT_THAT(problemWith("/api/view?type=1&%74ype=1"), HasSubstr("\"type\" stands twice"));
}

TEST(RequestTarget, EscapesAreTwoHexadecimalDigits)
{
    for (const char* target : {"/%", "/%4", "/%4g", "/a?b=%", "/a?%zz=1", "/a?b=%-1"}) {
        EXPECT_THAT(problemWith(target), HasSubstr("two hexadecimal digits")) << target;
    }
}

TEST(RequestTarget, ControlCharactersAndWhatIsNoUtf8AreRefused)
{
    for (const char* target :
         {"/a%00", "/a?b=%0a", "/a?b=%0d%0aSet-Cookie:x", "/a?b=%7f", "/%ff", "/a?b=%c0%af", "/a?b=%ed%a0%80"}) {
        EXPECT_THAT(problemWith(target), HasSubstr("control character, or is no UTF-8")) << target;
    }
}

TEST(RequestTarget, OnlyAbsolutePathsAreTargets)
{
    for (const char* target : {"", "api", "*", "http://127.0.0.1/api/view"}) {
        EXPECT_THAT(problemWith(target), HasSubstr("begins with a slash")) << target;
    }
    EXPECT_THAT(problemWith("/a#b"), HasSubstr("#"));
}
