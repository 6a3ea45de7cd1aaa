#!/usr/bin/env bash
# models.sh ZEBVIEW FOLDER: renders models of the package assimp-testmodels by zebview and by F3D, and
# puts each pair into FOLDER/NAME.png, zebview's to the left: the pictures of docs/models.md. Where F3D
# makes none, its half is dark. Needs the packages assimp-testmodels, f3d, xvfb, xauth and imagemagick.
set -euo pipefail
(($# == 2)) || { sed -n '2,4s/^# //p' "$0" >&2; exit 2; }
zebview=$1 folder=$2
models=/usr/share/assimp/models
background=0.32,0.34,0.43
temporary=$(mktemp -d)
trap 'rm -rf "$temporary"' EXIT
mkdir -p "$folder"

# pair MODEL UP: which axis is up is told to F3D, which does not ask the file.
pair() {
    local name
    name=$(tr '[:upper:]' '[:lower:]' <<<"${1%.*}" | tr '/_' '--')
    "$zebview" "$models/$1" -o "$temporary/ours.png" --size 240x240 --background "$background"
    rm -f "$temporary/theirs.png"
    timeout 60 xvfb-run -a f3d "$models/$1" --output "$temporary/theirs.png" --resolution 240,240 --up "$2" \
        --camera-azimuth-angle 30 --camera-elevation-angle 20 --bg-color "$background" --filename=0 --quiet \
        >/dev/null 2>&1 || true
    [ -f "$temporary/theirs.png" ] || convert -size 240x240 xc:gray20 "$temporary/theirs.png"
    convert "$temporary/ours.png" "$temporary/theirs.png" +append -colors 128 -strip "PNG8:$folder/$name.png"
}

while read -r model up; do
    pair "$model" "$up"
done <<'MODELS'
glTF2/BoxTextured-glTF/BoxTextured.gltf +Y
glTF2/BoxTextured-glTF-pbrSpecularGlossiness/BoxTextured.gltf +Y
glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb +Y
glTF2/ClearCoat-glTF/ClearCoatTest.gltf +Y
glTF2/textureTransform/TextureTransformTest.gltf +Y
glTF2/simple_skin/simple_skin.gltf +Y
glTF/CesiumMilkTruck/CesiumMilkTruck.gltf +Y
OBJ/spider.obj +Y
OBJ/cube_with_vertexcolors.obj +Y
OBJ/WusonOBJ.obj +Y
FBX/spider.fbx +Y
FBX/huesitos.fbx +Y
FBX/maxPbrMaterial_metalRough.fbx +Y
FBX/phong_cube.fbx +Y
Collada/duck.dae +Y
Collada/COLLADA.dae +Y
Collada/sphere.dae +Y
Collada/teapots.DAE +Y
3DS/fels.3ds +Z
3DS/test1.3ds +Z
3DS/cube_with_diffuse_texture.3DS +Z
3DS/cubes_with_alpha.3DS +Z
PLY/Wuson.ply +Y
PLY/float-color.ply +Y
STL/Spider_binary.stl +Z
STL/Wuson.stl +Z
X/test.x +Y
DXF/wuson.dxf +Y
OFF/Wuson.off +Y
MODELS
