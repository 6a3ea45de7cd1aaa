#include "animation.h"

#include <assimp/anim.h>
#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "failure.h"

namespace zebview
{

namespace
{

using Rotation = aiQuaterniont<double>;

// Where a file does not say how many there are in a second.
constexpr double kUsualTicks = 25;

double ticksPerSecond(const aiAnimation& animation)
{
    const double ticks = animation.mTicksPerSecond;
    return ticks > 0 && std::isfinite(ticks) ? ticks : kUsualTicks;
}

// Two keys and how far the time is from the first to the second: below 0 and above 1 it is outside.
struct Between {
    unsigned first = 0, second = 0;
    double part = 0;
};

// The keys about a time; there is at least one.
template <class Key>
Between keysAt(const Key* keys, unsigned count, double time)
{
    const Key* const after = std::upper_bound(
        keys, keys + count, time, [](double t, const Key& key) { return t < key.mTime; });
    const auto next = static_cast<unsigned>(after - keys);
    const unsigned second = std::clamp(next, count > 1 ? 1U : 0U, count - 1);
    const unsigned first = second > 0 ? second - 1 : 0;
    const double length = keys[second].mTime - keys[first].mTime;
    if (!(length > 0)) return {second, second, 0};
    return {first, second, (time - keys[first].mTime) / length};
}

// Before the first key and after the last one. Most files leave open what happens there; their
// formats mean that the nearest key counts.
template <class Key>
Between keysAt(const Key* keys, unsigned count, double time, const aiNodeAnim& channel)
{
    const double start = keys[0].mTime, end = keys[count - 1].mTime;
    const aiAnimBehaviour behaviour = time < start ? channel.mPreState : channel.mPostState;
    const bool outside = time < start || time > end;
    if (outside && behaviour == aiAnimBehaviour_REPEAT && end > start) {
        const double passed = std::fmod(time - start, end - start);
        time = passed < 0 ? passed + end : passed + start;
    }
    Between between = keysAt(keys, count, time);
    if (!outside || behaviour != aiAnimBehaviour_LINEAR) {
        between.part = std::clamp(between.part, 0.0, 1.0);
    }
    return between;
}

Vector vectorAt(const aiVectorKey* keys, unsigned count, double time, const aiNodeAnim& channel,
                const Vector& otherwise)
{
    if (count == 0) return otherwise;
    const Between at = keysAt(keys, count, time, channel);
    const aiVector3D &a = keys[at.first].mValue, &b = keys[at.second].mValue;
    const Vector from(a.x, a.y, a.z), to(b.x, b.y, b.z);
    return from + (to - from) * at.part;
}

Rotation rotationAt(const aiNodeAnim& channel, double time, const Rotation& otherwise)
{
    if (channel.mNumRotationKeys == 0) return otherwise;
    const Between at = keysAt(channel.mRotationKeys, channel.mNumRotationKeys, time, channel);
    const aiQuaternion& a = channel.mRotationKeys[at.first].mValue;
    const aiQuaternion& b = channel.mRotationKeys[at.second].mValue;
    Rotation result;
    Rotation::Interpolate(result, Rotation(a.w, a.x, a.y, a.z), Rotation(b.w, b.x, b.y, b.z),
                          at.part);
    return result.Normalize();
}

bool isFinite(const Matrix& m)
{
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            if (!std::isfinite(m[row][column])) return false;
        }
    }
    return true;
}

// The node's own transformation where there are no keys for a part of it, or useless ones.
Matrix transformationAt(const aiNodeAnim& channel, double time, const Matrix& own)
{
    Vector scale, position;
    Rotation rotation;
    own.Decompose(scale, rotation, position);
    scale = vectorAt(channel.mScalingKeys, channel.mNumScalingKeys, time, channel, scale);
    rotation = rotationAt(channel, time, rotation);
    position = vectorAt(channel.mPositionKeys, channel.mNumPositionKeys, time, channel, position);
    const Matrix moved(scale, rotation, position);
    return isFinite(moved) ? moved : own;
}

// How much there is of each target at a time.
std::unordered_map<unsigned, double> weightsAt(const aiMeshMorphAnim& channel, double time)
{
    std::unordered_map<unsigned, double> weights;
    if (channel.mNumKeys == 0) return weights;
    const Between at = keysAt(channel.mKeys, channel.mNumKeys, time);
    const double part = std::clamp(at.part, 0.0, 1.0);
    const auto add = [&](const aiMeshMorphKey& key, double share) {
        for (unsigned i = 0; i < key.mNumValuesAndWeights; ++i) {
            const double weight = key.mWeights[i] * share;
            if (std::isfinite(weight)) weights[key.mValues[i]] += weight;
        }
    };
    add(channel.mKeys[at.first], 1 - part);
    add(channel.mKeys[at.second], part);
    return weights;
}

// FBX files number the meshes of a node after its name.
std::string withoutNumber(const std::string& name)
{
    const std::size_t star = name.rfind('*');
    const bool numbered = star != std::string::npos && star + 1 < name.size() &&
                          name.find_first_not_of("0123456789", star + 1) == std::string::npos;
    return numbered ? name.substr(0, star) : name;
}

}  // namespace

double lengthOf(const aiAnimation& animation)
{
    const double length = animation.mDuration / ticksPerSecond(animation);
    return length > 0 && std::isfinite(length) ? length : 0;
}

std::vector<std::string> animationLines(const aiScene& scene)
{
    std::vector<std::string> lines;
    for (unsigned i = 0; i < scene.mNumAnimations; ++i) {
        const aiAnimation& animation = *scene.mAnimations[i];
        const std::string name = animation.mName.C_Str();
        char length[40];
        std::snprintf(length, sizeof length, " (%.3g s)", lengthOf(animation));
        lines.push_back(std::to_string(i) + (name.empty() ? "" : ' ' + name) + length);
    }
    return lines;
}

bool hasLooseBones(const aiScene& scene)
{
    const aiNode* const root = scene.mRootNode;
    if (!root) return false;
    for (unsigned i = 0; i < root->mNumChildren; ++i) {
        const aiNode& bones = *root->mChildren[i];
        if (std::strcmp(bones.mName.C_Str(), "<MDL_bones>") != 0) continue;
        return std::all_of(bones.mChildren, bones.mChildren + bones.mNumChildren,
                           [](const aiNode* bone) { return bone->mNumChildren == 0; });
    }
    return false;
}

const aiAnimation& findAnimation(const aiScene& scene, const std::string& wanted)
{
    if (scene.mNumAnimations == 0) throw Failure("it has no animations");
    if (hasLooseBones(scene)) throw Failure("its animations cannot be shown");
    if (wanted.empty()) return *scene.mAnimations[0];
    for (unsigned i = 0; i < scene.mNumAnimations; ++i) {
        if (wanted == scene.mAnimations[i]->mName.C_Str()) return *scene.mAnimations[i];
    }
    for (unsigned i = 0; i < scene.mNumAnimations; ++i) {
        if (wanted == std::to_string(i)) return *scene.mAnimations[i];
    }
    throw Failure("it has no animation '" + wanted + "': --animation list names those it has");
}

// Without recursion: files can nest nodes as deep as they like.
Pose::Pose(const aiScene& scene, const Matrix& root, const std::optional<Moment>& moment)
    : fBends(!hasLooseBones(scene))
{
    std::unordered_map<std::string, const aiNodeAnim*> channels;
    double time = 0;
    if (moment) {
        const aiAnimation& animation = *moment->animation;
        time = moment->seconds * ticksPerSecond(animation);
        for (unsigned i = 0; i < animation.mNumChannels; ++i) {
            channels.emplace(animation.mChannels[i]->mNodeName.C_Str(), animation.mChannels[i]);
        }
        for (unsigned i = 0; i < animation.mNumMorphMeshChannels; ++i) {
            const aiMeshMorphAnim& channel = *animation.mMorphMeshChannels[i];
            fWeights.emplace(withoutNumber(channel.mName.C_Str()), weightsAt(channel, time));
        }
    }
    std::vector<std::pair<const aiNode*, Matrix>> open;
    if (scene.mRootNode) open.emplace_back(scene.mRootNode, root);
    while (!open.empty()) {
        const auto [node, parent] = open.back();
        open.pop_back();
        const std::string name = node->mName.C_Str();
        Matrix own(node->mTransformation);
        const auto channel = channels.find(name);
        if (channel != channels.end()) own = transformationAt(*channel->second, time, own);
        fByName.emplace(name, fNodes.size());
        fNodes.push_back({node, parent * own});
        const Matrix toWorld = fNodes.back().toWorld;
        // Backwards, so that children come in the file's order.
        for (unsigned i = node->mNumChildren; i-- > 0;) {
            open.emplace_back(node->mChildren[i], toWorld);
        }
    }
}

const Matrix* Pose::find(const std::string& node) const
{
    const auto found = fByName.find(node);
    return found == fByName.end() ? nullptr : &fNodes[found->second].toWorld;
}

std::vector<double> Pose::weights(const aiNode& node, const aiMesh& mesh) const
{
    std::vector<double> result(mesh.mNumAnimMeshes);
    auto moved = fWeights.find(node.mName.C_Str());
    if (moved == fWeights.end()) moved = fWeights.find(mesh.mName.C_Str());
    for (unsigned i = 0; i < mesh.mNumAnimMeshes; ++i) {
        double weight = mesh.mAnimMeshes[i]->mWeight;
        if (moved != fWeights.end()) {
            const auto found = moved->second.find(i);
            weight = found == moved->second.end() ? 0 : found->second;
        }
        result[i] = std::isfinite(weight) ? weight : 0;
    }
    return result;
}

}  // namespace zebview
