#pragma once

/// The data-object types, in the order in which they are registered: the order in which a fresh
/// process hands out their meta-type ids. Whatever walks the types walks this list.
///
///     #define ROW(Class, Levels, Container, Python) ...
///
/// Class      the class's name
/// Levels     how many times the constructor from an id calls oxdObject::initialize()
/// Container  BuiltNames; or LiteralListName or LiteralVectorName where the meta-type of that
///            container is declared under a literal name, without a look at its element's name
/// Python     InPython, or NotInPython for the class that scripts never see
///
/// The list is in groups, one for each header, as a header declares the meta-types of its own classes.

#define OXD_MATERIALS(ROW)                                                                                             \
    ROW(oxdBRDFMaterial, 3, BuiltNames, InPython)                                                                      \
    ROW(oxdBrushedMetalMaterial, 4, BuiltNames, InPython)                                                              \
    ROW(oxdCarbonMaterial, 4, BuiltNames, InPython)                                                                    \
    ROW(oxdCarbonMaterial2D, 4, BuiltNames, InPython)                                                                  \
    ROW(oxdChromeMaterial, 4, BuiltNames, InPython)                                                                    \
    ROW(oxdEnvironmentMaterial, 3, BuiltNames, InPython)                                                               \
    ROW(oxdEnvironmentSwitchMaterial, 3, BuiltNames, InPython)                                                         \
    ROW(oxdFlipflopMaterial, 4, BuiltNames, InPython)                                                                  \
    ROW(oxdGlassMaterial, 4, BuiltNames, InPython)                                                                     \
    ROW(oxdGlowMaterial, 4, BuiltNames, InPython)                                                                      \
    ROW(oxdLayeredMaterial, 3, BuiltNames, InPython)                                                                   \
    ROW(oxdLightPortalMaterial, 3, BuiltNames, InPython)                                                               \
    ROW(oxdLineChromeMaterial, 3, BuiltNames, InPython)                                                                \
    ROW(oxdMaterial, 2, LiteralListName, InPython)                                                                     \
    ROW(oxdMeasuredMaterial, 3, BuiltNames, InPython)                                                                  \
    ROW(oxdMeasuredCarpaintMaterial, 3, BuiltNames, InPython)                                                          \
    ROW(oxdMeasuredCarpaint2Material, 3, BuiltNames, InPython)                                                         \
    ROW(oxdXRiteMeasuredMaterial, 3, BuiltNames, InPython)                                                             \
    ROW(oxdMetallicPaintMaterial, 4, BuiltNames, InPython)                                                             \
    ROW(oxdMultiPassMaterial, 3, BuiltNames, InPython)                                                                 \
    ROW(oxdNPRMaterial, 3, BuiltNames, InPython)                                                                       \
    ROW(oxdOCSMaterial, 3, BuiltNames, InPython)                                                                       \
    ROW(oxdPhongMaterial, 4, BuiltNames, InPython)                                                                     \
    ROW(oxdPlasticMaterial, 4, BuiltNames, InPython)                                                                   \
    ROW(oxdReflectivePlasticMaterial, 4, BuiltNames, InPython)                                                         \
    ROW(oxdReflectiveTriplanarMaterial, 4, BuiltNames, InPython)                                                       \
    ROW(oxdShadowMaterial, 3, BuiltNames, InPython)                                                                    \
    ROW(oxdSkylightMaterial, 3, BuiltNames, InPython)                                                                  \
    ROW(oxdSphereEnvironmentMaterial, 4, BuiltNames, InPython)                                                         \
    ROW(oxdSVBRDFMaterial, 3, BuiltNames, InPython)                                                                    \
    ROW(oxdSwitchMaterial, 3, BuiltNames, InPython)                                                                    \
    ROW(oxdTireMaterial, 4, BuiltNames, InPython)                                                                      \
    ROW(oxdTriplanarMaterial, 4, BuiltNames, InPython)                                                                 \
    ROW(oxdUnicolorPaintMaterial, 4, BuiltNames, InPython)                                                             \
    ROW(oxdVelvetMaterial, 4, BuiltNames, InPython)                                                                    \
    ROW(oxdWovenClothMaterial, 3, BuiltNames, InPython)

#define OXD_ROOT(ROW) ROW(oxdObject, 0, BuiltNames, InPython)

#define OXD_SCENE_OBJECTS(ROW)                                                                                         \
    ROW(oxdBaseObject, 1, BuiltNames, InPython)                                                                        \
    ROW(oxdSceneObject, 1, BuiltNames, InPython)                                                                       \
    ROW(oxdImage, 2, BuiltNames, InPython)                                                                             \
    ROW(oxdNode, 2, LiteralVectorName, NotInPython)

#define OXD_WEB_ENGINE(ROW) ROW(oxdWebEngine, 1, BuiltNames, InPython)

#define OXD_TIMER(ROW) ROW(oxdTimer, 2, BuiltNames, InPython)

#define OXD_ACTIONS(ROW)                                                                                               \
    ROW(oxdActionProject, 1, BuiltNames, InPython)                                                                     \
    ROW(oxdActionGraph, 1, LiteralListName, InPython)                                                                  \
    ROW(oxdActionContainer, 1, LiteralListName, InPython)                                                              \
    ROW(oxdActionSlot, 1, LiteralListName, InPython)

/// All 47 classes, and ENUMERATION(name) for the one enumeration, in its place among them.
#define OXD_CATALOGUE(ROW, ENUMERATION)                                                                                \
    OXD_MATERIALS(ROW)                                                                                                 \
    OXD_ROOT(ROW)                                                                                                      \
    OXD_SCENE_OBJECTS(ROW)                                                                                             \
    OXD_WEB_ENGINE(ROW)                                                                                                \
    ENUMERATION(oxdWebEngine::TextureSlotType)                                                                         \
    OXD_TIMER(ROW)                                                                                                     \
    OXD_ACTIONS(ROW)

/// The 47 classes alone.
#define OXD_CLASSES(ROW) OXD_CATALOGUE(ROW, OXD_NOTHING)
#define OXD_NOTHING(Enumeration)

/// Declares the meta-types of a row's class and of the containers whose names are literal. Qt
/// declares the other containers by itself.
#define OXD_DECLARE_METATYPES(Class, Levels, Container, Python)                                                        \
    Q_DECLARE_METATYPE(Class)                                                                                          \
    OXD_DECLARE_##Container(Class)
#define OXD_DECLARE_BuiltNames(Class)
#define OXD_DECLARE_LiteralListName(Class) Q_DECLARE_METATYPE(QList<Class>)
#define OXD_DECLARE_LiteralVectorName(Class) Q_DECLARE_METATYPE(QVector<Class>)
