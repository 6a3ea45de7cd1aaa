#include "surface.h"

#include <algorithm>
#include <cmath>

#include "microfacet.h"
#include "texture_images.h"
#include "texture_lookup.h"

namespace zebview
{

namespace
{

struct Look {
    Material material;
    bool colored;
    std::shared_ptr<const Around> around;
    std::optional<ScalarColors> scalar;
};

// Whether the alpha of a map of color is opacity.
bool isPaint(const Map& map) { return map.image->channels() == 4; }

// Of tiny mirrors whose highlights are as wide as those of an exponent.
float roughnessOf(float exponent) { return std::sqrt(std::sqrt(2 / (exponent + 2))); }

constexpr float kVarnish = 0.04f;  // glass and it mirror so much of what comes straight at them

// One row of points.
class Shading
{
public:
    Shading(const Look& look, ZebRow& row)
        : fMaterial(look.material),
          fColored(look.colored && !look.scalar),
          fAround(look.around.get()),
          fScalar(look.scalar),
          fRow(row),
          fLight(newPlanes(row))
    {
    }

    void shade()
    {
        findColor();
        findOpacity();
        if (!fMaterial.isLit) {
            fLight = fColor;
        } else if (fMaterial.facets) {
            shadeFacets(*fMaterial.facets);
        } else {
            shadePlastic();
        }
        addEmission();
        if (fMaterial.coat) addCoat(*fMaterial.coat);
        for (std::size_t c = 0; c < 3; ++c) {
            for (long k = 0; k < fRow.count; ++k) {
                fRow.Oi[c][k] = fOpacity[k] * (fThrough[c] ? 1 - fThrough[c][k] : 1);
                fRow.Ci[c][k] = fOpacity[k] * fLight[c][k];
            }
        }
    }

    void shadeDistance()
    {
        findColor();
        findOpacity();
        for (long k = 0; k < fRow.count; ++k) {
            const float opaque = fOpacity[k] >= 0.5f ? 1 : 0;
            for (std::size_t c = 0; c < 3; ++c) {
                fRow.Oi[c][k] = opaque;
                fRow.Ci[c][k] = opaque * fRow.P[2][k];
            }
        }
    }

private:
    using Four = std::array<float*, 4>;

    Four lookFour(const Map& map) const
    {
        const Planes color = newPlanes(fRow);
        const Four result{color[0], color[1], color[2], zebRowPlane(&fRow)};
        look(fRow, map, result.data());
        return result;
    }
    Planes lookColor(const Map& map) const
    {
        const Planes result = newPlanes(fRow);
        look(fRow, map, result.data());
        return result;
    }

    void findColor()
    {
        fColor = newPlanes(fRow);
        for (std::size_t c = 0; c < 3; ++c) std::copy_n(fRow.Cs[c], fRow.count, fColor[c]);
        if (fScalar) fScalar->find(fRow, fColor);
        fOpacity = zebRowPlane(&fRow);
        std::copy_n(fRow.Os[0], fRow.count, fOpacity);
        if (!fMaterial.colorMap) return;
        const Four texels = lookFour(fMaterial.colorMap);
        const bool painted = isPaint(fMaterial.colorMap);
        for (long k = 0; k < fRow.count; ++k) {
            const float alpha = painted ? texels[3][k] : 1;
            const float factor = alpha > 0 ? 1 / alpha : 0;
            for (std::size_t c = 0; c < 3; ++c) texels[c][k] *= factor;
            for (std::size_t c = 0; c < 3 && fColored; ++c) fColor[c][k] *= texels[c][k];
            fOpacity[k] *= alpha;
        }
        fPicture = {texels[0], texels[1], texels[2]};
    }

    void findOpacity()
    {
        const Map& map = fMaterial.opacityMap;
        if (map) {
            const Four texels = lookFour(map);
            for (long k = 0; k < fRow.count; ++k) {
                const float value = map.image->hasAlpha()
                                        ? texels[3][k]
                                        : (texels[0][k] + texels[1][k] + texels[2][k]) / 3;
                fOpacity[k] *= map.texture.isInverted ? 1 - value : value;
            }
        }
        if (!fMaterial.cutoff) return;
        for (long k = 0; k < fRow.count; ++k) {
            fOpacity[k] = fOpacity[k] >= *fMaterial.cutoff ? 1.0f : 0.0f;
        }
    }

    // Times the sign, of unit length.
    Planes unit(float* const* vectors, float sign) const
    {
        const Planes result = newPlanes(fRow);
        for (long k = 0; k < fRow.count; ++k) {
            const float x = vectors[0][k], y = vectors[1][k], z = vectors[2][k];
            const float length = std::sqrt(x * x + y * y + z * z);
            const float factor = length > 0 ? sign / length : 0;
            result[0][k] = factor * x;
            result[1][k] = factor * y;
            result[2][k] = factor * z;
        }
        return result;
    }
    Planes findView() const { return unit(fRow.I, -1); }

    // On the eye's side, of unit length. What bends them is about their own side.
    Planes findNormals(const Map& map, float scale) const
    {
        const Planes result = unit(fRow.N, 1);
        if (map) bendNormals(fRow, map, scale, result);
        zebRowFacing(&fRow, result.data(), result.data());
        return result;
    }

    // As the built-in surface does.
    void shadePlastic()
    {
        const Planes normals = findNormals(fMaterial.normalMap, fMaterial.normalScale);
        const Planes view = findView();
        const Planes ambient = newPlanes(fRow), diffuse = newPlanes(fRow);
        const Planes specular = newPlanes(fRow);
        zebRowAmbient(&fRow, ambient.data());
        zebRowDiffuse(&fRow, normals.data(), diffuse.data());
        if (fMaterial.specular > 0) {
            if (fMaterial.exponentMap) {
                addHighlights(normals, view, specular);
            } else {
                zebRowSpecular(&fRow, normals.data(), view.data(), fMaterial.roughness,
                               specular.data());
            }
        }
        if (fMaterial.specularMap) {
            const Planes texels = lookColor(fMaterial.specularMap);
            for (std::size_t c = 0; c < 3; ++c) {
                for (long k = 0; k < fRow.count; ++k) specular[c][k] *= texels[c][k];
            }
        }
        for (std::size_t c = 0; c < 3; ++c) {
            const float shine = fMaterial.specular * fMaterial.specularColor[c];
            const float* const tint = fMaterial.tintsHighlights ? fColor[c] : nullptr;
            for (long k = 0; k < fRow.count; ++k) {
                fLight[c][k] = fColor[c][k] * (ambient[c][k] + fMaterial.diffuse * diffuse[c][k]) +
                               shine * (tint ? tint[k] : 1) * specular[c][k];
            }
        }
        if (fAround) addAround(normals, view);
    }

    // 1 / roughness at each point.
    const float* findExponents() const
    {
        float* const result = zebRowPlane(&fRow);
        std::fill_n(result, fRow.count, 1 / fMaterial.roughness);
        if (!fMaterial.exponentMap) return result;
        const Four texels = lookFour(fMaterial.exponentMap);
        for (long k = 0; k < fRow.count; ++k) {
            const float mean = (texels[0][k] + texels[1][k] + texels[2][k]) / 3;
            result[k] = std::max(result[k] * mean, 1.0f);
        }
        return result;
    }

    // As zebRowSpecular, which knows one roughness.
    void addHighlights(const Planes& N, const Planes& V, const Planes& sum) const
    {
        const float* const exponents = findExponents();
        const Planes L = newPlanes(fRow), Cl = newPlanes(fRow);
        for (long light = 0; zebRowLight(&fRow, light, L.data(), Cl.data(), nullptr); ++light) {
            for (std::size_t c = 0; c < 3; ++c) {
                for (long k = 0; k < fRow.count; ++k) L[c][k] += V[c][k];
            }
            const Planes half = unit(L.data(), 1);
            for (long k = 0; k < fRow.count; ++k) {
                const float cosine =
                    N[0][k] * half[0][k] + N[1][k] * half[1][k] + N[2][k] * half[2][k];
                const float glint = cosine > 0 ? std::pow(cosine, exponents[k]) : 0;
                for (std::size_t c = 0; c < 3; ++c) sum[c][k] += Cl[c][k] * glint;
            }
        }
    }

    // The environment is as so many lamps: of each the surface shows what it shows of lamps, and
    // highlights are as wide as what tiny mirrors make of it (B. Walter et al., 2007).
    void addAround(const Planes& normals, const Planes& view)
    {
        const bool shines = fMaterial.specular > 0;
        const float* const exponents = findExponents();
        const float most = *std::max_element(exponents, exponents + fRow.count);
        const Planes mirror = shines ? mirrorWays(fRow, normals, view) : Planes{};
        const bool mayBeSmooth = shines && roughnessOf(most) < 0.1f;
        const float* const spread = mayBeSmooth ? spreadOf(fRow, mirror) : nullptr;
        const Planes texels = fMaterial.specularMap ? lookColor(fMaterial.specularMap) : Planes{};
        for (long k = 0; k < fRow.count; ++k) {
            const Color matt = fAround->scattered(normals, k);
            const float power = exponents[k];
            // The sum over all lamps straight ahead, each as much as it covers of the sky, over pi.
            const float whole = 4 / (power / 2 + 1) * (1 - std::exp2(-(power / 2 + 1)));
            Color shine{};
            if (shines) {
                shine = fAround->mirrored(mirror, k, roughnessOf(power), spread ? spread[k] : 0);
            }
            for (std::size_t c = 0; c < 3; ++c) {
                const float share =
                    std::min(whole * fMaterial.specular * fMaterial.specularColor[c], 1.0f);
                fLight[c][k] += fColor[c][k] * fMaterial.diffuse * matt[c] +
                                share * (texels[c] ? texels[c][k] : 1) * shine[c];
            }
        }
    }

    // What they are made of is to be set.
    FacetPlanes newFacets(const Map& normalMap, float normalScale) const
    {
        return {findNormals(normalMap, normalScale),
                findView(),
                newPlanes(fRow),
                newPlanes(fRow),
                zebRowPlane(&fRow),
                findOpenness()};
    }

    void shadeFacets(const Facets& facets)
    {
        const FacetPlanes planes = newFacets(fMaterial.normalMap, fMaterial.normalScale);
        Four texels{};
        if (facets.map) texels = lookFour(facets.map);
        for (long k = 0; k < fRow.count; ++k) {
            if (facets.isGlossy) {
                findGloss(facets, texels, k, planes);
            } else {
                findMetal(facets, texels, k, planes);
            }
        }
        if (fMaterial.transmission > 0) letThrough(planes);
        lightFacets(fRow, planes, fAround, fLight);
    }

    // What goes through is not scattered.
    void letThrough(const FacetPlanes& planes)
    {
        const Map& map = fMaterial.transmissionMap;
        const Four texels = map ? lookFour(map) : Four{};
        fThrough = newPlanes(fRow);
        for (long k = 0; k < fRow.count; ++k) {
            const float share = fMaterial.transmission * (texels[0] ? texels[0][k] : 1);
            const float entered = 1 - mirroredOf(kVarnish, planes, k);
            for (std::size_t c = 0; c < 3; ++c) {
                fThrough[c][k] = entered * share * planes.albedo[c][k];
                planes.albedo[c][k] *= 1 - share;
            }
        }
    }

    float* findOpenness() const
    {
        float* const result = zebRowPlane(&fRow);
        std::fill_n(result, fRow.count, 1.0f);
        if (!fMaterial.occlusionMap) return result;
        const Four open = lookFour(fMaterial.occlusionMap);
        for (long k = 0; k < fRow.count; ++k) {
            result[k] += fMaterial.occlusionStrength * (open[0][k] - 1);
        }
        return result;
    }

    // What it mirrors does not come from below it. How much of it there is is in its map's red,
    // roughness in its map's green.
    void addCoat(const Coat& coat)
    {
        const FacetPlanes planes = newFacets(coat.normalMap, coat.normalScale);
        const Four amounts = coat.amountMap ? lookFour(coat.amountMap) : Four{};
        const Four roughs = coat.roughMap ? lookFour(coat.roughMap) : Four{};
        for (long k = 0; k < fRow.count; ++k) {
            planes.rough[k] = coat.rough * (roughs[1] ? roughs[1][k] : 1);
            for (std::size_t c = 0; c < 3; ++c) {
                planes.albedo[c][k] = 0;
                planes.facing[c][k] = kVarnish;
            }
        }
        const Planes light = newPlanes(fRow);
        lightFacets(fRow, planes, fAround, light);
        for (long k = 0; k < fRow.count; ++k) {
            const float amount = coat.amount * (amounts[0] ? amounts[0][k] : 1);
            const float taken = amount * mirroredOf(kVarnish, planes, k);
            for (std::size_t c = 0; c < 3; ++c) {
                fLight[c][k] = (1 - taken) * fLight[c][k] + amount * light[c][k];
                if (fThrough[c]) fThrough[c][k] *= 1 - taken;
            }
        }
    }

    // Roughness is in the map's green, metal in its blue.
    void findMetal(const Facets& facets, const Four& texels, long k, const FacetPlanes& out) const
    {
        const float metal = facets.metal * (texels[2] ? texels[2][k] : 1);
        out.rough[k] = facets.rough * (texels[1] ? texels[1][k] : 1);
        for (std::size_t c = 0; c < 3; ++c) {
            const float color = fColor[c][k];
            out.albedo[c][k] = color * (1 - metal);
            out.facing[c][k] = facets.facing[c] + metal * (color - facets.facing[c]);
        }
    }

    void findGloss(const Facets& facets, const Four& texels, long k, const FacetPlanes& out) const
    {
        out.rough[k] = 1 - (1 - facets.rough) * (texels[3] ? texels[3][k] : 1);
        float most = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            out.facing[c][k] = facets.facing[c] * (texels[c] ? texels[c][k] : 1);
            most = std::max(most, out.facing[c][k]);
        }
        for (std::size_t c = 0; c < 3; ++c) out.albedo[c][k] = fColor[c][k] * (1 - most);
    }

    // A picture of the color alone is one of what shines, too, but in glTF.
    void addEmission()
    {
        Planes texels = fMaterial.facets ? Planes{} : fPicture;
        if (fMaterial.emissionMap) texels = lookColor(fMaterial.emissionMap);
        for (std::size_t c = 0; c < 3; ++c) {
            const float own = fMaterial.emission[c];
            if (own == 0) continue;
            for (long k = 0; k < fRow.count; ++k) {
                fLight[c][k] += own * (texels[c] ? texels[c][k] : 1);
            }
        }
    }

    const Material& fMaterial;
    const bool fColored;
    const Around* const fAround;
    const std::optional<ScalarColors>& fScalar;
    ZebRow& fRow;
    Planes fColor{}, fPicture{}, fLight;
    float* fOpacity = nullptr;
    Planes fThrough{};  // null: nothing goes through what is opaque
};

void shadeRow(void* data, ZebRow* row) { Shading(*static_cast<const Look*>(data), *row).shade(); }

void shadeDistance(void* data, ZebRow* row)
{
    Shading(*static_cast<const Look*>(data), *row).shadeDistance();
}

void freeLook(void* data) { delete static_cast<Look*>(data); }

bool variesInOpacity(const Material& material)
{
    return material.cutoff || material.opacityMap ||
           (material.colorMap && isPaint(material.colorMap) && material.colorMap.image->hasAlpha());
}

void setShader(Look* look, void (*shade)(void*, ZebRow*), bool variesInOpacity)
{
    for (const Map* const map : look->material.maps()) coordinateToken(map->texture.channel);
    const long flags = ZEB_SHADE_ANYWHERE | (variesInOpacity ? ZEB_SHADE_OPACITY : 0);
    const ZebShader shader{look, shade, freeLook, flags};
    zebCustomSurface(&shader);
}

}  // namespace

bool needsFunction(const Material& material)
{
    return !material.maps().empty() || (material.facets && material.isLit) || material.cutoff ||
           material.emission != Color{};
}

void setFunction(const Material& material, bool colored, std::shared_ptr<const Around> around,
                 const std::optional<ScalarColors>& scalar)
{
    setShader(new Look{material, colored, std::move(around), scalar}, shadeRow,
              variesInOpacity(material) || material.transmission > 0);
}

void setDistanceFunction(const Material& material, bool varies)
{
    const bool isCutOut = variesInOpacity(material);
    setShader(new Look{isCutOut ? material : Material(), false, nullptr, {}}, shadeDistance,
              varies || isCutOut);
}

}  // namespace zebview
