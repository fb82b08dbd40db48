// What the memory of sizes needs of a window. A window that wants to be remembered offers one of these.
#pragma once

#include <QObject>

class ResizableWindow : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Position on the desktop and size, in device-independent pixels.
    virtual int GetX() = 0;
    virtual int GetY() = 0;
    virtual int GetWidth() = 0;
    virtual int GetHeight() = 0;
    virtual void SetPosition(int i_x, int i_y) = 0;
    virtual void SetSize(int i_width, int i_height) = 0;

Q_SIGNALS:
    // Not emitted while the window is maximised: what is remembered is what it comes back to.
    void WindowResized(int i_width, int i_height);
    void WindowMoved(int i_x, int i_y);
};
