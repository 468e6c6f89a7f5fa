#include "ModelFile.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <assimp/DefaultIOSystem.h>
#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

constexpr qint64 largestFile = 1 << 30;
constexpr size_t mostNodes = 10000;
constexpr size_t mostVertices = 50000000; // of a mesh, whose size in bytes is an int
constexpr double steps = 10;              // of the highlight, each twice as sharp

constexpr unsigned postProcessing = aiProcess_ValidateDataStructure | aiProcess_Triangulate | aiProcess_SortByPType
    | aiProcess_GenSmoothNormals | aiProcess_JoinIdenticalVertices;

class Reporter : public Assimp::ProgressHandler
{
public:
    explicit Reporter(ModelFile::Progress progress)
        : m_progress(std::move(progress))
    {}

    bool Update(float part) override
    {
        const int percent = std::isfinite(part) ? std::clamp(static_cast<int>(part * 100), 0, 99) : 0;
        if (percent <= m_reported)
            return true;
        m_reported = percent;
        // Most readers take no notice of what this returns.
        if (!m_progress(percent))
            throw std::runtime_error("cancelled");
        return true;
    }

private:
    ModelFile::Progress m_progress;
    int m_reported = -1;
};

bool isReadable(const char *file)
{
    const QFileInfo info(QString::fromUtf8(file));
    return info.isFile() && info.size() <= largestFile;
}

// A file may name others, and those may be pipes, which wait for a writer when they are opened.
class RegularFiles : public Assimp::DefaultIOSystem
{
public:
    bool Exists(const char *file) const override { return isReadable(file); }
    Assimp::IOStream *Open(const char *file, const char *mode) override
    {
        return isReadable(file) ? DefaultIOSystem::Open(file, mode) : nullptr;
    }
};

QString text(const aiString &string)
{
    return QString::fromUtf8(string.C_Str());
}

QVector3D vector(const aiVector3D &v)
{
    const bool isFinite = std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
    return isFinite ? QVector3D(v.x, v.y, v.z) : QVector3D();
}

QMatrix4x4 matrix(const aiMatrix4x4 &m)
{
    return {m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4};
}

aiMatrix4x4 matrix(const QMatrix4x4 &m)
{
    return {m(0, 0), m(0, 1), m(0, 2), m(0, 3), m(1, 0), m(1, 1), m(1, 2), m(1, 3),
            m(2, 0), m(2, 1), m(2, 2), m(2, 3), m(3, 0), m(3, 1), m(3, 2), m(3, 3)};
}

Scene::Material convert(const aiMaterial &source)
{
    Scene::Material material;
    material.type = "oxdPhongMaterial";
    material.name = text(const_cast<aiMaterial &>(source).GetName());
    aiColor3D color(0.6f, 0.6f, 0.6f);
    source.Get(AI_MATKEY_COLOR_DIFFUSE, color);
    const auto part = [](float value) { return std::isfinite(value) ? std::clamp<double>(value, 0, 1) : 0; };
    material.color = QColor::fromRgbF(part(color.r), part(color.g), part(color.b));
    float shininess = 0;
    if (source.Get(AI_MATKEY_SHININESS, shininess) == aiReturn_SUCCESS && shininess >= 0)
        material.gloss = std::min(1.0, std::log2(shininess + 1) / steps);
    return material;
}

// Null for what has no triangles.
MeshPointer convert(const aiMesh &source)
{
    if (!(source.mPrimitiveTypes & aiPrimitiveType_TRIANGLE) || source.mNumVertices > mostVertices
        || source.mNumFaces > mostVertices)
        return nullptr;
    auto mesh = std::make_shared<Mesh>();
    mesh->vertices.reserve(source.mNumVertices);
    for (unsigned i = 0; i < source.mNumVertices; ++i)
        mesh->vertices.push_back(
            {vector(source.mVertices[i]), source.mNormals ? vector(source.mNormals[i]) : QVector3D(0, 1, 0)});
    mesh->indices.reserve(size_t(3) * source.mNumFaces);
    for (unsigned i = 0; i < source.mNumFaces; ++i) {
        const aiFace &face = source.mFaces[i];
        const bool isTriangle = face.mNumIndices == 3
            && std::all_of(face.mIndices, face.mIndices + 3, [&](unsigned v) { return v < source.mNumVertices; });
        if (isTriangle)
            mesh->indices.insert(mesh->indices.end(), face.mIndices, face.mIndices + 3);
    }
    return mesh->indices.empty() ? nullptr : mesh;
}

struct Place
{
    const aiNode *node;
    QMatrix4x4 transform;
};

Scene::Model convert(const aiScene &source, const QString &name)
{
    Scene::Model model;
    QHash<unsigned, int> materials; // those that something is made of: files and readers have others, too
    std::vector<MeshPointer> meshes;
    for (unsigned i = 0; i < source.mNumMeshes; ++i)
        meshes.push_back(convert(*source.mMeshes[i]));

    // Not by recursion, as a file decides how deep it is.
    std::vector<Place> places{{source.mRootNode, matrix(source.mRootNode->mTransformation)}};
    for (size_t next = 0; next < places.size() && places.size() < mostNodes; ++next) {
        const Place place = places[next];
        for (unsigned i = 0; i < place.node->mNumChildren; ++i) {
            const aiNode *child = place.node->mChildren[i];
            places.push_back({child, place.transform * matrix(child->mTransformation)});
        }
    }
    for (const Place &place : places) {
        for (unsigned i = 0; i < place.node->mNumMeshes; ++i) {
            const unsigned index = place.node->mMeshes[i];
            if (!meshes[index])
                continue;
            const unsigned material = source.mMeshes[index]->mMaterialIndex;
            if (!materials.contains(material)) {
                materials.insert(material, model.materials.size());
                model.materials.append(convert(*source.mMaterials[material]));
            }
            const QStringList names{text(place.node->mName), text(source.mMeshes[index]->mName), name};
            Scene::Node node;
            node.name = *std::find_if(names.cbegin(), names.cend(), [](const QString &n) { return !n.isEmpty(); });
            node.material = static_cast<Scene::Id>(materials.value(material));
            node.mesh = meshes[index];
            node.transform = place.transform;
            model.nodes.append(node);
        }
    }
    return model;
}

aiMaterial *makeMaterial(const Scene::Material &material)
{
    auto *result = new aiMaterial;
    const aiString name(material.name.toStdString());
    const aiColor3D color(float(material.color.redF()), float(material.color.greenF()), float(material.color.blueF()));
    const auto shininess = static_cast<float>(std::exp2(steps * material.gloss) - 1);
    result->AddProperty(&name, AI_MATKEY_NAME);
    result->AddProperty(&color, 1, AI_MATKEY_COLOR_DIFFUSE);
    result->AddProperty(&shininess, 1, AI_MATKEY_SHININESS);
    return result;
}

aiMesh *makeMesh(const Scene::Node &node, unsigned material)
{
    auto *result = new aiMesh;
    const Mesh &mesh = *node.mesh;
    result->mName = node.name.toStdString();
    result->mMaterialIndex = material;
    result->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
    result->mNumVertices = static_cast<unsigned>(mesh.vertices.size());
    result->mVertices = new aiVector3D[mesh.vertices.size()];
    result->mNormals = new aiVector3D[mesh.vertices.size()];
    for (size_t i = 0; i < mesh.vertices.size(); ++i) {
        const auto &[position, normal] = mesh.vertices[i];
        result->mVertices[i] = {position.x(), position.y(), position.z()};
        result->mNormals[i] = {normal.x(), normal.y(), normal.z()};
    }
    result->mNumFaces = static_cast<unsigned>(mesh.indices.size() / 3);
    result->mFaces = new aiFace[result->mNumFaces];
    for (unsigned i = 0; i < result->mNumFaces; ++i) {
        result->mFaces[i].mNumIndices = 3;
        result->mFaces[i].mIndices = new unsigned[3];
        std::copy_n(&mesh.indices[size_t(3) * i], 3, result->mFaces[i].mIndices);
    }
    return result;
}

// The exported scene owns all that it points to.
void fill(aiScene *target, const Scene &scene)
{
    const auto &materials = scene.materials();
    target->mNumMaterials = static_cast<unsigned>(materials.size());
    target->mMaterials = new aiMaterial *[target->mNumMaterials];
    std::transform(materials.cbegin(), materials.cend(), target->mMaterials, makeMaterial);

    QVector<Scene::Node> nodes = scene.nodes();
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(), [](const Scene::Node &node) { return node.isFloor; }),
                nodes.end());
    const auto count = static_cast<unsigned>(nodes.size());
    target->mNumMeshes = count;
    target->mMeshes = new aiMesh *[count];
    target->mRootNode = new aiNode;
    target->mRootNode->mNumChildren = count;
    target->mRootNode->mChildren = new aiNode *[count];
    for (unsigned i = 0; i < count; ++i) {
        const Scene::Node &node = nodes.at(static_cast<int>(i));
        const auto *const material =
            std::find_if(materials.cbegin(), materials.cend(),
                         [&node](const Scene::Material &one) { return one.id == node.material; });
        target->mMeshes[i] = makeMesh(node, static_cast<unsigned>(material - materials.cbegin()));
        auto *place = new aiNode(node.name.toStdString());
        place->mTransformation = matrix(node.transform);
        place->mParent = target->mRootNode;
        place->mNumMeshes = 1;
        place->mMeshes = new unsigned[1]{i};
        target->mRootNode->mChildren[i] = place;
    }
}

} // namespace

Scene::Model ModelFile::read(const QString &file, const Progress &progress, QString *error)
{
    const QFileInfo info(file);
    if (!info.isFile()) {
        *error = QStringLiteral("no such file");
        return {};
    }
    if (info.size() > largestFile) {
        *error = QStringLiteral("larger than a gibibyte");
        return {};
    }
    bool isCancelled = false;
    const auto watched = [&](int percent) {
        isCancelled = !progress(percent);
        return !isCancelled;
    };
    try {
        Assimp::Importer importer;
        importer.SetIOHandler(new RegularFiles);            // the importer owns both
        importer.SetProgressHandler(new Reporter(watched)); //
        importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
        const aiScene *scene = importer.ReadFile(QFile::encodeName(file).constData(), postProcessing);
        if (!scene || !scene->mRootNode) {
            *error = isCancelled ? QStringLiteral("cancelled")
                                 : QString::fromLocal8Bit(importer.GetErrorString()).simplified();
            return {};
        }
        Scene::Model model = convert(*scene, info.completeBaseName());
        if (model.nodes.isEmpty())
            *error = QStringLiteral("it has no triangles");
        return model;
    } catch (const std::exception &exception) {
        *error = QString::fromLocal8Bit(exception.what());
    }
    return {};
}

bool ModelFile::write(const Scene &scene, const QString &file, QString *error)
{
    if (QFileInfo(file).suffix().compare(QLatin1String("obj"), Qt::CaseInsensitive) != 0) {
        *error = QStringLiteral("only .obj files can be written");
        return false;
    }
    try {
        aiScene exported;
        fill(&exported, scene);
        Assimp::Exporter exporter;
        if (exporter.Export(&exported, "obj", QFile::encodeName(file).constData()) == aiReturn_SUCCESS)
            return true;
        *error = QString::fromLocal8Bit(exporter.GetErrorString()).simplified();
    } catch (const std::exception &exception) {
        *error = QString::fromLocal8Bit(exception.what());
    }
    return false;
}
