#pragma once

#include <QString>

#include "oxBaseService.h"

/// Loads and saves files in the main process.
///
/// Each operation but loadFile() calls the main process and answers with a default value without
/// a connection.
class OXKERNELSERVICES_EXPORT oxFileIOService : public oxBaseService
{
    Q_OBJECT

public:
    explicit oxFileIOService(QObject *parent = nullptr);
    ~oxFileIOService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.
    virtual bool newFile();
    /// Reads the regular file @p file in pieces, from its start to its end, then once more as its
    /// upload. This implementation has nowhere to upload it to.
    ///
    /// Emits progress(0), each new per cent while it reads, progress(100) once all is read, and
    /// progress(100) again as the upload goes on. Does not return before the upload is over.
    ///
    /// @return false when @p file is no regular file or cannot be read; nothing is printed, and
    ///         without a file that opens nothing is emitted
    virtual bool loadFile(const QString &file);
    virtual bool saveFile(const QString &file);
    virtual QString getTARNDir();
    virtual QString getTARNDataDir();
    virtual QString getTARNExamplesDir();
    virtual QString getImageReadFilter();
    virtual QString getImageWriteFilter();

Q_SIGNALS:
    /// How far a load is, in per cent; 100 when the file is read and while it is uploaded.
    void progress(int percent);
};
