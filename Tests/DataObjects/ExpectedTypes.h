#pragma once

#include <QtGlobal>

/// What the catalogue has to say, written down a second time: a change of a row, or of the order,
/// that nobody meant to make fails here.
struct ExpectedType
{
    const char *name;
    int levels;
    const char *literalContainer; ///< null where both names are built from the class's
    bool inPython;
};

constexpr ExpectedType expectedTypes[] = {
    {"oxdBRDFMaterial", 3, nullptr, true},
    {"oxdBrushedMetalMaterial", 4, nullptr, true},
    {"oxdCarbonMaterial", 4, nullptr, true},
    {"oxdCarbonMaterial2D", 4, nullptr, true},
    {"oxdChromeMaterial", 4, nullptr, true},
    {"oxdEnvironmentMaterial", 3, nullptr, true},
    {"oxdEnvironmentSwitchMaterial", 3, nullptr, true},
    {"oxdFlipflopMaterial", 4, nullptr, true},
    {"oxdGlassMaterial", 4, nullptr, true},
    {"oxdGlowMaterial", 4, nullptr, true},
    {"oxdLayeredMaterial", 3, nullptr, true},
    {"oxdLightPortalMaterial", 3, nullptr, true},
    {"oxdLineChromeMaterial", 3, nullptr, true},
    {"oxdMaterial", 2, "QList<oxdMaterial>", true},
    {"oxdMeasuredMaterial", 3, nullptr, true},
    {"oxdMeasuredCarpaintMaterial", 3, nullptr, true},
    {"oxdMeasuredCarpaint2Material", 3, nullptr, true},
    {"oxdXRiteMeasuredMaterial", 3, nullptr, true},
    {"oxdMetallicPaintMaterial", 4, nullptr, true},
    {"oxdMultiPassMaterial", 3, nullptr, true},
    {"oxdNPRMaterial", 3, nullptr, true},
    {"oxdOCSMaterial", 3, nullptr, true},
    {"oxdPhongMaterial", 4, nullptr, true},
    {"oxdPlasticMaterial", 4, nullptr, true},
    {"oxdReflectivePlasticMaterial", 4, nullptr, true},
    {"oxdReflectiveTriplanarMaterial", 4, nullptr, true},
    {"oxdShadowMaterial", 3, nullptr, true},
    {"oxdSkylightMaterial", 3, nullptr, true},
    {"oxdSphereEnvironmentMaterial", 4, nullptr, true},
    {"oxdSVBRDFMaterial", 3, nullptr, true},
    {"oxdSwitchMaterial", 3, nullptr, true},
    {"oxdTireMaterial", 4, nullptr, true},
    {"oxdTriplanarMaterial", 4, nullptr, true},
    {"oxdUnicolorPaintMaterial", 4, nullptr, true},
    {"oxdVelvetMaterial", 4, nullptr, true},
    {"oxdWovenClothMaterial", 3, nullptr, true},
    {"oxdObject", 0, nullptr, true},
    {"oxdBaseObject", 1, nullptr, true},
    {"oxdSceneObject", 1, nullptr, true},
    {"oxdImage", 2, nullptr, true},
    {"oxdNode", 2, "QVector<oxdNode>", false},
    {"oxdWebEngine", 1, nullptr, true},
    {"oxdTimer", 2, nullptr, true},
    {"oxdActionProject", 1, nullptr, true},
    {"oxdActionGraph", 1, "QList<oxdActionGraph>", true},
    {"oxdActionContainer", 1, "QList<oxdActionContainer>", true},
    {"oxdActionSlot", 1, "QList<oxdActionSlot>", true},
};

/// The enumeration is registered after this class.
constexpr char classBeforeEnumeration[] = "oxdWebEngine";
constexpr char enumerationName[] = "oxdWebEngine::TextureSlotType";
