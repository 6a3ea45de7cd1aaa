#include "util/cores.h"

#include <gtest/gtest.h>

#include "support/folder.h"

#if defined(_WIN32)
#include <windows.h>

#include <bit>
#else
#include <cerrno>
#include <initializer_list>
#include <thread>
#endif

using namespace zeb;

TEST(Cores, AreOneToTheMost)
{
    EXPECT_GE(usableCores(), 1);
    EXPECT_LE(usableCores(), kMaxCores);
}

#if defined(_WIN32)

TEST(Cores, AreNoFewerThanTheMaskHas)
{
    DWORD_PTR own = 0, all = 0;
    ASSERT_TRUE(GetProcessAffinityMask(GetCurrentProcess(), &own, &all));
    EXPECT_GE(usableCores(), std::popcount(own));
}

#else

namespace
{

// A system that knows so many CPUs, of which this process may use three: the first two and the
// last.
template <std::size_t cpus>
int threeOf(pid_t pid, std::size_t size, cpu_set_t* mask)
{
    EXPECT_EQ(pid, 0);
    if (8 * size < cpus) {
        errno = EINVAL;
        return -1;
    }
    CPU_ZERO_S(size, mask);
    for (const std::size_t cpu : {std::size_t{0}, std::size_t{1}, cpus - 1}) {
        CPU_SET_S(cpu, size, mask);
    }
    return 0;
}

template <int error>
int failing(pid_t, std::size_t, cpu_set_t*)
{
    errno = error;
    return -1;
}

// Folders that stand for /proc and /sys.
class GroupCores : public testing::Test
{
protected:
    GroupCores() { std::filesystem::create_directories(folder / "proc/self"); }

    // What the process is a member of, a line for each hierarchy.
    void member(const std::string& lines) { zebtest::put(folder / "proc/self/cgroup", lines); }
    // A file under /sys/fs/cgroup.
    void file(const std::string& name, const std::string& text)
    {
        const auto path = folder / "sys/fs/cgroup" / name;
        std::filesystem::create_directories(path.parent_path());
        zebtest::put(path, text);
    }
    void oldLimit(const std::string& group, const std::string& quota, const std::string& period)
    {
        file(group + "/cpu.cfs_quota_us", quota + '\n');
        file(group + "/cpu.cfs_period_us", period + '\n');
    }
    long cores() const { return groupCores((folder / "proc").string(), (folder / "sys").string()); }
    long coresUnder(const std::string& limit)
    {
        file("one/cpu.max", limit);
        return cores();
    }
    long coresUnder(const std::string& quota, const std::string& period)
    {
        oldLimit("cpu/one", quota, period);
        return cores();
    }

    const zebtest::Folder folder;
};

}  // namespace

TEST(Cores, AreThoseOfTheThreadsMask)
{
    std::thread([] {
        cpu_set_t mask;
        ASSERT_EQ(sched_getaffinity(0, sizeof mask, &mask), 0);
        int last = CPU_SETSIZE - 1;
        while (!CPU_ISSET(last, &mask)) --last;
        CPU_ZERO(&mask);
        CPU_SET(last, &mask);
        ASSERT_EQ(sched_setaffinity(0, sizeof mask, &mask), 0);
        EXPECT_EQ(usableCores(), 1);
    }).join();
}

TEST(Cores, OfMasksOfAnySizeAreCounted)
{
    EXPECT_EQ(affinityCores(threeOf<8>), 3);
    EXPECT_EQ(affinityCores(threeOf<1024>), 3);
    EXPECT_EQ(affinityCores(threeOf<1025>), 3);
    EXPECT_EQ(affinityCores(threeOf<100000>), 3);
}

TEST(Cores, AreTheMachinesWithoutAMask)
{
    const long machine = std::max(1L, static_cast<long>(std::thread::hardware_concurrency()));
    EXPECT_EQ(affinityCores(failing<EPERM>), machine);
    EXPECT_EQ(affinityCores(failing<EINVAL>), machine) << "whatever the size";
}

TEST_F(GroupCores, AreTheMostWithoutGroups)
{
    EXPECT_EQ(cores(), kMaxCores) << "nothing can be read";
    member("");
    EXPECT_EQ(cores(), kMaxCores);
    member("0::/one\n");
    EXPECT_EQ(cores(), kMaxCores) << "the group has no folder";
}

TEST_F(GroupCores, AreTheQuotaInPeriodsRoundedUp)
{
    member("0::/one\n");
    EXPECT_EQ(coresUnder("200000 100000\n"), 2);
    EXPECT_EQ(coresUnder("200001 100000\n"), 3);
    EXPECT_EQ(coresUnder("299999 100000\n"), 3);
    EXPECT_EQ(coresUnder("75000 25000\n"), 3);
    EXPECT_EQ(coresUnder("1000 100000\n"), 1);
    EXPECT_EQ(coresUnder("25600000 100000\n"), 256);
    EXPECT_EQ(coresUnder("25600001 100000\n"), kMaxCores);
    EXPECT_EQ(coresUnder("9223372036854775807 1\n"), kMaxCores);
    EXPECT_EQ(coresUnder("9223372036854775807 9223372036854775806\n"), 2);
}

TEST_F(GroupCores, AreTheMostWithoutALimit)
{
    member("0::/one\n4:cpu:/one\n");
    EXPECT_EQ(coresUnder("max 100000\n"), kMaxCores);
    EXPECT_EQ(coresUnder("-1", "100000"), kMaxCores);
}

TEST_F(GroupCores, AreTheMostUnderGarbledLimits)
{
    member("0::/one\n");
    for (const char* text :
         {"", "\n", "200000\n", "max\n", "x 100000\n", "200000 x\n", "200000 0\n", "0 100000\n",
          "200000 -100000\n", "-200000 100000\n", "2e5 1e5\n", "200000x 100000\n",
          "200000 100000 1\n", "9223372036854775808 1\n"}) {
        EXPECT_EQ(coresUnder(text), kMaxCores) << text;
    }
    member("4:cpu:/one\n");
    for (const char* text : {"", "x", "0", "-5", "2e5", "200000 1", "9223372036854775808"}) {
        EXPECT_EQ(coresUnder(text, "100000"), kMaxCores) << text;
        EXPECT_EQ(coresUnder("200000", text), kMaxCores) << text;
    }
    EXPECT_EQ(coresUnder("200000", "100000"), 2);
}

TEST_F(GroupCores, AreTheMostWhereALimitCannotBeRead)
{
    member("0::/one\n4:cpu:/two\n5:cpu:/three\n");
    std::filesystem::create_directories(folder / "sys/fs/cgroup/one/cpu.max");
    file("cpu/two/cpu.cfs_quota_us", "200000\n");
    file("cpu/three/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(cores(), kMaxCores) << "a folder, no period and no quota";
}

TEST_F(GroupCores, AreThoseOfTheTightestGroupOnTheWay)
{
    member("0::/one/two/three\n");
    file("one/two/three/cpu.max", "400000 100000\n");
    EXPECT_EQ(cores(), 4);
    file("one/two/cpu.max", "max 100000\n");
    file("one/cpu.max", "300000 100000\n");
    EXPECT_EQ(cores(), 3);
    file("cpu.max", "200000 100000\n");
    EXPECT_EQ(cores(), 2);
    file("one/two/three/cpu.max", "100000 100000\n");
    EXPECT_EQ(cores(), 1);
    file("one/other/cpu.max", "1 100000\n");
    member("0::/one/two\n");
    EXPECT_EQ(cores(), 2) << "only those on the way";
}

TEST_F(GroupCores, OfVersionOneAreThoseOfTheTightestGroupOnTheWay)
{
    member("4:cpu:/one/two\n");
    oldLimit("cpu/one/two", "400000", "100000");
    EXPECT_EQ(cores(), 4);
    oldLimit("cpu/one", "250000", "100000");
    EXPECT_EQ(cores(), 3);
    oldLimit("cpu", "100000", "50000");
    EXPECT_EQ(cores(), 2);
}

TEST_F(GroupCores, OfARootAreItsOwn)
{
    member("0::/\n");
    file("cpu.max", "300000 100000\n");
    EXPECT_EQ(cores(), 3);
    member("4:cpu:/\n");
    oldLimit("cpu", "200000", "100000");
    EXPECT_EQ(cores(), 2);
}

// The folder of a container's group is mounted as the root, and the name is that outside.
TEST_F(GroupCores, OfAGroupWithoutAFolderAreThoseOfTheRoot)
{
    member("0::/pods/first\n");
    file("cpu.max", "300000 100000\n");
    EXPECT_EQ(cores(), 3);
    member("4:cpu:/pods/first\n");
    oldLimit("cpu", "200000", "100000");
    EXPECT_EQ(cores(), 2);
}

TEST_F(GroupCores, OutsideOfWhatIsMountedAreTheMost)
{
    file("cpu.max", "300000 100000\n");
    file("first/cpu.max", "200000 100000\n");
    for (const char* group : {"0::/..\n", "0::/../first\n", "0::/../../first\n"}) {
        member(group);
        EXPECT_EQ(cores(), kMaxCores) << group;
    }
    member("0::/..first\n");
    EXPECT_EQ(cores(), 3) << "a name like any other";
}

TEST_F(GroupCores, OfControllersMountedTogether)
{
    member("4:cpu,cpuacct:/one\n");
    oldLimit("cpu,cpuacct/one", "300000", "100000");
    EXPECT_EQ(cores(), 3) << "under the names of both";
    member("4:cpuacct,cpu:/one\n");
    EXPECT_EQ(cores(), kMaxCores);
    oldLimit("cpu/one", "200000", "100000");
    EXPECT_EQ(cores(), 2) << "under that of one";
}

TEST_F(GroupCores, OfOtherControllersDoNotCount)
{
    member("3:cpuset:/one\n2:cpuacct:/one\n1:name=cpu:/one\n5:cpux,xcpu:/one\n");
    for (const char* controllers : {"cpuset", "cpuacct", "name=cpu", "cpux,xcpu", "cpu"}) {
        oldLimit(std::string(controllers) + "/one", "200000", "100000");
    }
    EXPECT_EQ(cores(), kMaxCores);
}

TEST_F(GroupCores, OfBothVersionsAreTheLeast)
{
    member("12:memory:/\n4:cpu:/one\n0::/two\n");
    oldLimit("cpu/one", "300000", "100000");
    EXPECT_EQ(cores(), 3);
    file("two/cpu.max", "200000 100000\n");
    EXPECT_EQ(cores(), 2);
}

TEST_F(GroupCores, OfNamesWithColonsAndBlanks)
{
    member("0::/one:/and two:\n");
    file("one:/and two:/cpu.max", "200000 100000\n");
    EXPECT_EQ(cores(), 2);
}

TEST_F(GroupCores, OfGarbledMembershipsAreTheMost)
{
    file("cpu.max", "200000 100000\n");
    oldLimit("cpu", "200000", "100000");
    for (const char* text : {"\n", "0\n", "0:\n", "0::\n", "0::one\n", ":/\n", "cpu:/\n", "4:cpu\n",
                             "4:cpu:one\n", "\n\n/\n"}) {
        member(text);
        EXPECT_EQ(cores(), kMaxCores) << text;
    }
    member("garbled\n0::/");
    EXPECT_EQ(cores(), 2) << "the other lines count";
}

#endif
