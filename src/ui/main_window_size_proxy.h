// What of the window is remembered: the geometry that it has while it is not maximised.
#pragma once

#include "ui/main_window.h"
#include "ui/resizable_window.h"

#include <QElapsedTimer>
#include <QRect>

class MainWindow::SizeProxy : public ResizableWindow {
public:
    explicit SizeProxy(QWidget* ip_window) : mp_window(ip_window) {}

    int GetX() override { return mp_window->geometry().x(); }
    int GetY() override { return mp_window->geometry().y(); }
    int GetWidth() override { return mp_window->geometry().width(); }
    int GetHeight() override { return mp_window->geometry().height(); }
    void SetPosition(int i_x, int i_y) override;
    void SetSize(int i_width, int i_height) override;

    // The window tells of itself.
    void OnMoved();
    void OnResized();
    void OnStateChanged();

private:
    bool IsRemembered() const;
    void NoteGeometry();

    QWidget* mp_window;
    QRect m_latest;  // as reported last
    QRect m_settled; // as reported before the present burst of changes
    QElapsedTimer m_sinceReport;
};
