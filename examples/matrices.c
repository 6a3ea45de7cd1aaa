/* Transformations as whole matrices. zebLoadMatrix says where an object lies in the world;
 * zebMultMatrix puts another before what is there. A second load, of a matrix that flattens
 * everything onto the floor along the light's direction, draws the shadows. */
#include "shapes.h"

enum { kPosts = 7 };
static const float light[3] = {0.75f, -1, 0.6f};

static void addPost(int i)
{
    /* Points are row vectors: the rows say where the axes and the origin go. */
    const float turn = 0.7f * (float)(i - kPosts / 2), high = 0.6f + 0.06f * (float)(i * i % 7);
    ZebMatrix place = {{0.8f, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0.8f, 0}, {0, 0, 0, 1}};
    place[1][1] = high;
    place[3][0] = 1.05f * (float)(i - kPosts / 2);
    place[3][2] = 0.5f * cosf(turn);
    zebMatrixPush();
    zebMultMatrix(place);
    zebSkew(9 * (float)(i - kPosts / 2), 0, 1, 0, 1, 0, 0);
    zebRotate(-90, 1, 0, 0);
    zebCylinder(0.3f, 0, 2, 360, 0);
    zebTranslate(0, 0, 2);
    zebDisk(0, 0.3f, 360, 0);
    zebTranslate(0, 0, 0.36f);
    zebSphere(0.36f, -1, 1, 360, 0);
    zebMatrixPop();
}

int main(int argc, char** argv)
{
    static const unsigned long colors[kPosts] = {0x264653, 0x2A9D8F, 0x8AB17D, 0xE9C46A,
                                                 0xF4A261, 0xE76F51, 0xA23B2B};
    ZebMatrix upright = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    ZebMatrix flat = {{1, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 1, 0}, {0, 0.004f, 0, 1}};
    int i;
    flat[1][0] = -light[0] / light[1], flat[1][2] = -light[2] / light[1];
    beginPicture(argc, argv, "matrices", 800, 450);
    zebViewPerspective(24);
    zebTranslate(0.05f, -0.75f, 13.4f);
    zebRotate(-17, 1, 0, 0);
    zebSceneBegin();
    addAmbient(0.3f, 0xF4F0FF);
    addDistant(0.9f, 0xFFF0DC, light[0], light[1], light[2]);
    zebSurface(zebQuark("diffuse"), 0);
    paint(0xEFE3D2);
    addBackdrop(20, 4, 6);
    zebLoadMatrix(flat);
    zebSurface(zebQuark("constant"), 0);
    paint(0xB7A690);
    for (i = 0; i < kPosts; ++i) addPost(i);
    zebLoadMatrix(upright);
    usePlastic(0.8f, 0.35f, 0.08f);
    for (i = 0; i < kPosts; ++i) paint(colors[i]), addPost(i);
    zebSceneEnd();
    return endPicture();
}
