// What moves in a file: where its nodes are at a time, and how its meshes are morphed then.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "vector.h"

struct aiAnimation;
struct aiMesh;
struct aiNode;
struct aiScene;

namespace zebview
{

// A time of one of a file's animations.
struct Moment {
    const aiAnimation* animation;
    double seconds;
};

// How long an animation runs, in seconds.
double lengthOf(const aiAnimation& animation);

// The lines that list a file's animations.
std::vector<std::string> animationLines(const aiScene& scene);

// Whether assimp has read bones without saying which of them hangs on which (up to 5.2, those of
// Half-Life's models): then they bend nothing.
bool hasLooseBones(const aiScene& scene);

// wanted  an animation's name, or its number, from 0; empty: the first. Throws a Failure if there
//         is none.
const aiAnimation& findAnimation(const aiScene& scene, const std::string& wanted);

class Pose
{
public:
    struct Placed {
        const aiNode* node;
        Matrix toWorld;
    };

    // Of all nodes.
    //
    // moment  none: as the file has them without an animation
    Pose(const aiScene& scene, const Matrix& root, const std::optional<Moment>& moment);

    // In the file's order.
    const std::vector<Placed>& nodes() const { return fNodes; }
    // Null where there is no such node.
    const Matrix* find(const std::string& node) const;
    // Whether meshes can follow their bones.
    bool bends() const { return fBends; }
    // How much there is of each of a mesh's targets.
    std::vector<double> weights(const aiNode& node, const aiMesh& mesh) const;

private:
    bool fBends;
    std::vector<Placed> fNodes;
    std::unordered_map<std::string, std::size_t> fByName;
    // By the name of a node or a mesh.
    std::unordered_map<std::string, std::unordered_map<unsigned, double>> fWeights;
};

}  // namespace zebview
