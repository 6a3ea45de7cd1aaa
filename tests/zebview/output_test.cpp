// What becomes of the file that had the picture's name.

#include <sys/stat.h>

#include "image.h"
#include "process.h"
#include "shapes.h"

namespace
{

using zebtest::Image;

using Words = std::vector<std::string>;

class Output : public zebtest::Zebview
{
protected:
    const std::string cube = write("cube.obj", zebtest::cubeObj());
    const Words kSmall{"--size", "40x30", "--samples", "1"};

    mode_t mode(const std::string& name) const
    {
        struct stat found {
        };
        EXPECT_EQ(stat(path(name).c_str(), &found), 0);
        return found.st_mode & 07777;
    }
};

TEST_F(Output, NewFilesHaveTheModeThatTheUserHasSet)
{
    const mode_t before = umask(027);
    render(cube, kSmall);
    umask(before);
    EXPECT_EQ(mode("picture.png"), 0640U);
}

TEST_F(Output, AReplacedFilePassesOnItsMode)
{
    write("picture.png", "old");
    ASSERT_EQ(chmod(path("picture.png").c_str(), 0604), 0);
    EXPECT_EQ(Image(render(cube, kSmall)).width, 40);
    EXPECT_EQ(mode("picture.png"), 0604U);
}

TEST_F(Output, LinksStayAndLeadToThePicture)
{
    std::filesystem::create_directory(path("folder"));
    write("folder/old.png", "old");
    for (const char* target : {"folder/old.png", "folder/new.png"}) {
        std::filesystem::create_symlink(target, path("link.png"));
        render(cube, kSmall, "link.png");
        EXPECT_TRUE(std::filesystem::is_symlink(path("link.png")));
        EXPECT_EQ(Image(path(target)).width, 40);
        std::filesystem::remove(path("link.png"));
    }
    EXPECT_EQ(files(), (Words{"cube.obj", "folder"}));
}

TEST_F(Output, APipeGetsThePicture)
{
    ASSERT_EQ(mkfifo(path("pipe.png").c_str(), 0600), 0);
    // Both ends are open, and the pipe has room for all of it: nobody waits for anybody.
    const int pipe = open(path("pipe.png").c_str(), O_RDWR | O_NONBLOCK);
    render(cube, kSmall, "pipe.png");
    std::string got(1 << 16, '\0');
    const ssize_t count = ::read(pipe, got.data(), got.size());
    close(pipe);
    ASSERT_GT(count, 0);
    got.resize(static_cast<std::size_t>(count));
    EXPECT_EQ(got, read(render(cube, kSmall)));
}

}  // namespace
