// What every plug-in object does before it adds anything of its own.
#include <gtest/gtest.h>

#include <startup/dllinstance.h>

TEST(DllInstance, KeepsItsNameAndDoesNothingByItself)
{
    IDllInstance instance(QStringLiteral("Recorder1"));
    EXPECT_EQ(instance.InstanceName(), QStringLiteral("Recorder1"));
    EXPECT_TRUE(instance.Start());
    instance.Idle();
    instance.Stop();
    EXPECT_EQ(instance.InstanceName(), QStringLiteral("Recorder1"));
}

TEST(DllInstance, MayHaveNoName)
{
    EXPECT_TRUE(IDllInstance().InstanceName().isEmpty());
}
