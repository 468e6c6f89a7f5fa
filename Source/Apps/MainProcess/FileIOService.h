#pragma once

#include "Scene.h"
#include "oxFileIOService.h"

class Renderer;

/// Shows model files, read in a thread of their own while everything else goes on, and saves the
/// scene.
class FileIOService : public oxFileIOService
{
    Q_OBJECT

public:
    /// @param scene, renderer not owned
    FileIOService(Scene *scene, Renderer *renderer, QObject *parent = nullptr);
    ~FileIOService() override;

public Q_SLOTS:
    /// What cannot be done prints why to standard error, as "oxFileIOService: couldn't read '/file':
    /// why". One load at a time; newFile() and loadFile() answer false while another runs.
    bool newFile() override;
    bool loadFile(const QString &file) override;
    bool saveFile(const QString &file) override;
    QString getTARNDir() override;
    QString getTARNDataDir() override;
    QString getTARNExamplesDir() override;
    QString getImageReadFilter() override;
    QString getImageWriteFilter() override;

private:
    bool readModel(const QString &file, Scene::Model *model, QString *error);
    bool upload(const Scene::Model &model);

    Scene *m_scene;
    Renderer *m_renderer;
    bool m_isLoading = false;
};
