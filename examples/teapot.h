/* The teapot that has served as a test of curved surfaces for decades: 32 bicubic Bezier patches,
 * as four meshes that are closed in u. Its own z axis points up; it stands on z = 0, from the
 * handle's x = -3 to the spout's 3.5. */
#ifndef ZEBCORE_EXAMPLES_TEAPOT_H
#define ZEBCORE_EXAMPLES_TEAPOT_H

#include <zebcore/zebcore.h>

enum { kTeapotRows = 13 };

/* Radius and height along the outlines of what is round: from the rim to the middle of the bottom,
 * and from the knob to the lid's edge. */
static const float kTeapotBody[13][2] = {{1.4f, 2.4f},  {1.3375f, 2.53125f}, {1.4375f, 2.53125f},
                                         {1.5f, 2.4f},  {1.75f, 1.875f},     {2, 1.35f},
                                         {2, 0.9f},     {2, 0.45f},          {1.5f, 0.225f},
                                         {1.5f, 0.15f}, {1.5f, 0.075f},      {1.425f, 0},
                                         {0, 0}};
static const float kTeapotLid[7][2] = {{0, 3.15f},    {0.8f, 3.15f}, {0, 2.85f},  {0.2f, 2.7f},
                                       {0.4f, 2.55f}, {1.3f, 2.55f}, {1.3f, 2.4f}};

/* Rings of handle and spout: x and z of the inner edge, x and z of the outer edge, half the width.
 */
static const float kTeapotHandle[7][5] = {
    {-1.6f, 2.025f, -1.5f, 2.25f, 0.3f}, {-2.3f, 2.025f, -2.5f, 2.25f, 0.3f},
    {-2.7f, 2.025f, -3, 2.25f, 0.3f},    {-2.7f, 1.8f, -3, 1.8f, 0.3f},
    {-2.7f, 1.575f, -3, 1.35f, 0.3f},    {-2.5f, 1.125f, -2.65f, 0.9375f, 0.3f},
    {-2, 0.9f, -1.9f, 0.6f, 0.3f}};
static const float kTeapotSpout[7][5] = {
    {1.7f, 1.425f, 1.7f, 0.6f, 0.66f},       {2.6f, 1.425f, 3.1f, 0.825f, 0.66f},
    {2.3f, 2.1f, 2.4f, 2.025f, 0.25f},       {2.7f, 2.4f, 3.3f, 2.4f, 0.25f},
    {2.8f, 2.475f, 3.525f, 2.49375f, 0.25f}, {2.9f, 2.475f, 3.45f, 2.5125f, 0.15f},
    {2.8f, 2.4f, 3.2f, 2.4f, 0.15f}};

/* Four quarters round the axis, whose inner control points lie 0.56 of the radius to the side; of
 * the knob, whose radius no other row has, a little more. */
static inline void addTeapotRound(const float (*outline)[2], long rows)
{
    float points[kTeapotRows][12][3];
    long i, j;
    for (j = 0; j < rows; ++j) {
        const float k = outline[j][0] == 0.8f ? 0.5625f : 0.56f;
        const float side[12] = {0, k, 1, 1, 1, k, 0, -k, -1, -1, -1, -k};
        for (i = 0; i < 12; ++i) {
            points[j][i][0] = outline[j][0] * side[(i + 3) % 12];
            points[j][i][1] = outline[j][0] * side[i];
            points[j][i][2] = outline[j][1];
        }
    }
    zebPatchMesh(ZEB_BICUBIC, 12, ZEB_PERIODIC, rows, ZEB_NONPERIODIC, zebQuark("point"), points,
                 0);
}

/* Two halves: along one side from the inner edge to the outer, and back along the other. */
static inline void addTeapotTube(const float (*rings)[5])
{
    static const float side[6] = {0, 1, 1, 0, -1, -1};
    float points[7][6][3];
    long i, j;
    for (j = 0; j < 7; ++j) {
        for (i = 0; i < 6; ++i) {
            const float* edge = rings[j] + (i >= 2 && i <= 4 ? 2 : 0);
            points[j][i][0] = edge[0];
            points[j][i][1] = rings[j][4] * side[i];
            points[j][i][2] = edge[1];
        }
    }
    zebPatchMesh(ZEB_BICUBIC, 6, ZEB_PERIODIC, 7, ZEB_NONPERIODIC, zebQuark("point"), points, 0);
}

static inline void addTeapot(void)
{
    addTeapotRound(kTeapotBody, 13);
    addTeapotRound(kTeapotLid, 7);
    addTeapotTube(kTeapotHandle);
    addTeapotTube(kTeapotSpout);
}

#endif
