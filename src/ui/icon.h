#pragma once

#include <QIcon>

class QString;

// The picture of a resource name such as ":/icons/room_icon". Of a name without an ending Qt finds out only by the
// desktop's whole database of file kinds what it is, which takes milliseconds of the program's start.
QIcon LoadIcon(const QString& i_resource);
