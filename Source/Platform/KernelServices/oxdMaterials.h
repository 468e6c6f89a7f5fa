#pragma once

#include "oxdSceneObjects.h"

/// What a surface looks like. The base of all materials, and itself a type that lists of any
/// material are made of: a material copied into one is a plain oxdMaterial there.
class OXKERNELSERVICES_EXPORT oxdMaterial : public oxdBaseObject
{
    Q_OBJECT

public:
    explicit oxdMaterial(unsigned long long id = 0) { initialize(id); }
};

/// What the materials have in common whose look is made of colours, textures and reflections. No
/// type of its own: it has no meta-object, as scripts are shown a class's bases too.
class OXKERNELSERVICES_EXPORT oxdStandardMaterial : public oxdMaterial
{
public:
    explicit oxdStandardMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A surface described by its reflectance function.
class OXKERNELSERVICES_EXPORT oxdBRDFMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdBRDFMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Brushed metal.
class OXKERNELSERVICES_EXPORT oxdBrushedMetalMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdBrushedMetalMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Carbon fibre, woven in space.
class OXKERNELSERVICES_EXPORT oxdCarbonMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdCarbonMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Carbon fibre, woven in the plane of its texture.
class OXKERNELSERVICES_EXPORT oxdCarbonMaterial2D : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdCarbonMaterial2D(unsigned long long id = 0) { initialize(id); }
};

/// Chrome.
class OXKERNELSERVICES_EXPORT oxdChromeMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdChromeMaterial(unsigned long long id = 0) { initialize(id); }
};

/// The surroundings that light the scene, from a picture.
class OXKERNELSERVICES_EXPORT oxdEnvironmentMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdEnvironmentMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A choice between several environments.
class OXKERNELSERVICES_EXPORT oxdEnvironmentSwitchMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdEnvironmentSwitchMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Paint whose colour changes with the angle of view.
class OXKERNELSERVICES_EXPORT oxdFlipflopMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdFlipflopMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Glass.
class OXKERNELSERVICES_EXPORT oxdGlassMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdGlassMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A surface that glows.
class OXKERNELSERVICES_EXPORT oxdGlowMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdGlowMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Several materials, one over the other.
class OXKERNELSERVICES_EXPORT oxdLayeredMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdLayeredMaterial(unsigned long long id = 0) { initialize(id); }
};

/// An opening that lets the light of an environment into a room.
class OXKERNELSERVICES_EXPORT oxdLightPortalMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdLightPortalMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Chrome with a drawn line pattern.
class OXKERNELSERVICES_EXPORT oxdLineChromeMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdLineChromeMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A surface measured in reality.
class OXKERNELSERVICES_EXPORT oxdMeasuredMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdMeasuredMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Car paint measured in reality.
class OXKERNELSERVICES_EXPORT oxdMeasuredCarpaintMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdMeasuredCarpaintMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Car paint measured in reality, in the second format.
class OXKERNELSERVICES_EXPORT oxdMeasuredCarpaint2Material : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdMeasuredCarpaint2Material(unsigned long long id = 0) { initialize(id); }
};

/// A surface measured with a scanning device, from its file.
class OXKERNELSERVICES_EXPORT oxdXRiteMeasuredMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdXRiteMeasuredMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Paint with metal flakes.
class OXKERNELSERVICES_EXPORT oxdMetallicPaintMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdMetallicPaintMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A material drawn in several passes.
class OXKERNELSERVICES_EXPORT oxdMultiPassMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdMultiPassMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A surface drawn without realism, as by hand.
class OXKERNELSERVICES_EXPORT oxdNPRMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdNPRMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A surface whose colours come from a colour system.
class OXKERNELSERVICES_EXPORT oxdOCSMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdOCSMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A plain surface with a highlight.
class OXKERNELSERVICES_EXPORT oxdPhongMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdPhongMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Plastic.
class OXKERNELSERVICES_EXPORT oxdPlasticMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdPlasticMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Plastic that mirrors its surroundings.
class OXKERNELSERVICES_EXPORT oxdReflectivePlasticMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdReflectivePlasticMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A surface textured from three sides, that mirrors its surroundings.
class OXKERNELSERVICES_EXPORT oxdReflectiveTriplanarMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdReflectiveTriplanarMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Shows only the shadows that fall on it.
class OXKERNELSERVICES_EXPORT oxdShadowMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdShadowMaterial(unsigned long long id = 0) { initialize(id); }
};

/// The sky as surroundings, from date and place.
class OXKERNELSERVICES_EXPORT oxdSkylightMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdSkylightMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Surroundings from the picture of a mirroring sphere.
class OXKERNELSERVICES_EXPORT oxdSphereEnvironmentMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdSphereEnvironmentMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A surface described by a reflectance function that varies over it.
class OXKERNELSERVICES_EXPORT oxdSVBRDFMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdSVBRDFMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A choice between several materials.
class OXKERNELSERVICES_EXPORT oxdSwitchMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdSwitchMaterial(unsigned long long id = 0) { initialize(id); }
};

/// The rubber of a tire.
class OXKERNELSERVICES_EXPORT oxdTireMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdTireMaterial(unsigned long long id = 0) { initialize(id); }
};

/// A surface textured from three sides.
class OXKERNELSERVICES_EXPORT oxdTriplanarMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdTriplanarMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Paint of one colour.
class OXKERNELSERVICES_EXPORT oxdUnicolorPaintMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdUnicolorPaintMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Velvet.
class OXKERNELSERVICES_EXPORT oxdVelvetMaterial : public oxdStandardMaterial
{
    Q_OBJECT

public:
    explicit oxdVelvetMaterial(unsigned long long id = 0) { initialize(id); }
};

/// Cloth described by its weave.
class OXKERNELSERVICES_EXPORT oxdWovenClothMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    explicit oxdWovenClothMaterial(unsigned long long id = 0) { initialize(id); }
};

OXD_MATERIALS(OXD_DECLARE_METATYPES)
