#pragma once

#include <QString>
#include <QStringList>

namespace halvo {

/// The names of all scenes.
QStringList sceneNames();

/// Writes a picture of every scene, or of the named ones alone, to the folder; the desktop's
/// background shows around the panel. False when a file could not be written.
bool writePictures(const QString& folder, const QStringList& only, const QString& suffix);

} // namespace halvo
