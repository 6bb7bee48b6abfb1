// The exception's message, source, function and line, also when it is copied.
#include <stdexcept>

#include <gtest/gtest.h>

#include <vkbase/vkexception.h>

TEST(VKException, CarriesMessageAndPlace)
{
    const VKException exception("it failed", "devicecontrol\\recording2\\recording", "CRecording", 1006);
    EXPECT_STREQ(exception.what(), "it failed");
    EXPECT_EQ(exception.Source(), "devicecontrol\\recording2\\recording");
    EXPECT_EQ(exception.Function(), "CRecording");
    EXPECT_EQ(exception.Line(), 1006);
}

TEST(VKException, IsCaughtAsAStandardException)
{
    EXPECT_THROW(throw VKException("it failed", "source", "function", 1), std::runtime_error);
}

TEST(VKException, KeepsItsTextsWhenCopied)
{
    VKException copy("other", "", "", 0);
    {
        const VKException original("it failed", "source", "function", 7);
        copy = original;
    }
    EXPECT_STREQ(copy.what(), "it failed");
    EXPECT_EQ(copy.Source(), "source");
    EXPECT_EQ(copy.Line(), 7);
}
