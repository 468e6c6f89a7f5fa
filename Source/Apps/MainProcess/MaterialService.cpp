#include "MaterialService.h"

#include <algorithm>
#include <cmath>

MaterialService::MaterialService(Scene *scene, QObject *parent)
    : oxMaterialService(parent)
    , m_scene(scene)
{
    connect(m_scene, &Scene::materialsChanged, this, &MaterialService::materialsChanged);
}

MaterialService::~MaterialService() = default;

QList<oxdMaterial> MaterialService::getMaterials()
{
    QList<oxdMaterial> handles;
    for (const Scene::Material &material : m_scene->materials())
        handles.append(oxdMaterial(material.id));
    return handles;
}

QStringList MaterialService::getNames(const QList<oxdMaterial> &materials)
{
    QStringList names;
    for (const oxdMaterial &handle : materials)
        names.append(material(handle).name);
    return names;
}

QStringList MaterialService::getTypes(const QList<oxdMaterial> &materials)
{
    QStringList types;
    for (const oxdMaterial &handle : materials)
        types.append(QString::fromLatin1(material(handle).type));
    return types;
}

QVariantList MaterialService::getColors(const QList<oxdMaterial> &materials)
{
    QVariantList colors;
    for (const oxdMaterial &handle : materials)
        colors.append(material(handle).color);
    return colors;
}

void MaterialService::setColor(const QList<oxdMaterial> &materials, const QColor &color)
{
    if (!color.isValid())
        return;
    QVector<Scene::Material> changed = sceneMaterials(materials);
    for (Scene::Material &material : changed)
        material.color = color;
    m_scene->change(changed, tr("Colour"));
}

QVariantList MaterialService::getGloss(const QList<oxdMaterial> &materials)
{
    QVariantList values;
    for (const oxdMaterial &handle : materials)
        values.append(material(handle).gloss);
    return values;
}

void MaterialService::setGloss(const QList<oxdMaterial> &materials, double gloss)
{
    if (std::isnan(gloss))
        return;
    QVector<Scene::Material> changed = sceneMaterials(materials);
    for (Scene::Material &material : changed)
        material.gloss = std::clamp(gloss, 0.0, 1.0);
    m_scene->change(changed, tr("Gloss"));
}

Scene::Material MaterialService::material(const oxdMaterial &handle) const
{
    const Scene::Material *found = m_scene->material(handle.objectId());
    return found ? *found : Scene::Material();
}

QVector<Scene::Material> MaterialService::sceneMaterials(const QList<oxdMaterial> &handles) const
{
    QVector<Scene::Material> result;
    for (const oxdMaterial &handle : handles) {
        if (const Scene::Material *found = m_scene->material(handle.objectId()))
            result.append(*found);
    }
    return result;
}
