#include "skin.h"

#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>

namespace zebview
{

namespace
{

Vector asVector(const aiVector3D& v) { return {v.x, v.y, v.z}; }

// Takes normals along with what a matrix does to points. The cofactors do so without a division,
// and turn the normals over where a mirror image turns the winding over.
class NormalTransform
{
public:
    explicit NormalTransform(const Matrix& m)
        : fX(Vector(m.b1, m.b2, m.b3) ^ Vector(m.c1, m.c2, m.c3)),
          fY(Vector(m.c1, m.c2, m.c3) ^ Vector(m.a1, m.a2, m.a3)),
          fZ(Vector(m.a1, m.a2, m.a3) ^ Vector(m.b1, m.b2, m.b3))
    {
    }
    Vector operator()(const Vector& v) const { return direction(Vector(fX * v, fY * v, fZ * v)); }

private:
    Vector fX, fY, fZ;
};

// The targets as differences, but where the file says that they are such already.
void addTarget(const aiVector3D* target, const aiVector3D* base, bool isDifference, double weight,
               std::vector<Vector>& values)
{
    if (!target) return;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Vector change = asVector(target[i]) - (isDifference ? Vector() : asVector(base[i]));
        values[i] += change * weight;
    }
}

// The mesh as it is before it is placed.
Shape morphed(const aiMesh& mesh, const aiNode& node, const Pose& pose)
{
    Shape shape;
    shape.points.resize(mesh.mNumVertices);
    for (unsigned i = 0; i < mesh.mNumVertices; ++i) shape.points[i] = asVector(mesh.mVertices[i]);
    if (mesh.HasNormals()) {
        shape.normals.resize(mesh.mNumVertices);
        for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
            shape.normals[i] = asVector(mesh.mNormals[i]);
        }
    }
    const std::vector<double> weights = pose.weights(node, mesh);
    const bool differences = mesh.mMethod == aiMorphingMethod_MORPH_RELATIVE;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        const aiAnimMesh& target = *mesh.mAnimMeshes[i];
        if (weights[i] == 0 || target.mNumVertices != mesh.mNumVertices) continue;
        addTarget(target.mVertices, mesh.mVertices, differences, weights[i], shape.points);
        addTarget(target.mNormals, mesh.mNormals, differences, weights[i], shape.normals);
    }
    return shape;
}

// For every vertex the mean of what its bones do, by their weights. Those without bones go with
// the node.
std::vector<Matrix> bent(const aiMesh& mesh, const Matrix& node, const Pose& pose)
{
    std::vector<Matrix> sums(mesh.mNumVertices, Matrix() * 0.0);
    std::vector<double> weights(mesh.mNumVertices);
    for (unsigned b = 0; b < mesh.mNumBones; ++b) {
        const aiBone& bone = *mesh.mBones[b];
        const Matrix* const place = pose.find(bone.mName.C_Str());
        if (!place) continue;
        const Matrix toWorld = *place * Matrix(bone.mOffsetMatrix);
        for (unsigned w = 0; w < bone.mNumWeights; ++w) {
            const aiVertexWeight& weight = bone.mWeights[w];
            if (weight.mVertexId >= mesh.mNumVertices) continue;
            if (!(weight.mWeight > 0) || !std::isfinite(weight.mWeight)) continue;
            sums[weight.mVertexId] = sums[weight.mVertexId] + toWorld * double{weight.mWeight};
            weights[weight.mVertexId] += weight.mWeight;
        }
    }
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sums[i] = weights[i] > 0 ? sums[i] * (1 / weights[i]) : node;
    }
    return sums;
}

bool hasBones(const aiMesh& mesh, const Pose& pose)
{
    if (!pose.bends()) return false;
    return std::any_of(mesh.mBones, mesh.mBones + mesh.mNumBones, [&](const aiBone* bone) {
        return bone->mNumWeights > 0 && pose.find(bone->mName.C_Str());
    });
}

}  // namespace

bool isBent(const aiMesh& mesh, const Pose& pose)
{
    return mesh.mNumAnimMeshes > 0 || hasBones(mesh, pose);
}

Shape shapeOf(const aiMesh& mesh, const Pose::Placed& place, const Pose& pose)
{
    Shape shape = morphed(mesh, *place.node, pose);
    const auto move = [&](std::size_t i, const Matrix& toWorld, const NormalTransform& turned) {
        shape.points[i] = toWorld * shape.points[i];
        if (!shape.normals.empty()) shape.normals[i] = turned(shape.normals[i]);
    };
    if (hasBones(mesh, pose)) {
        const std::vector<Matrix> moves = bent(mesh, place.toWorld, pose);
        std::size_t mirrored = 0;
        for (std::size_t i = 0; i < moves.size(); ++i) {
            move(i, moves[i], NormalTransform(moves[i]));
            mirrored += moves[i].Determinant() < 0;
        }
        shape.isMirrored = mirrored > moves.size() / 2;
    } else {
        const NormalTransform turned(place.toWorld);
        for (std::size_t i = 0; i < shape.points.size(); ++i) move(i, place.toWorld, turned);
        shape.isMirrored = place.toWorld.Determinant() < 0;
    }
    return shape;
}

}  // namespace zebview
