#pragma once

class QImage;
class QString;

// Writes a PNG of at most 256 colours, which takes a third of the place that all of them take. False if it cannot be
// written.
[[nodiscard]] bool SavePicture(const QImage& i_image, const QString& i_path);
