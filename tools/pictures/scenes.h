// What the pictures show: one scene for each page, each state of it worth a look, and each dialog. A new page or dialog
// gets its line here.
#pragma once

#include <functional>
#include <vector>

class QWidget;

struct Scene {
    const char* name; // of the file, without its extension
    // Brings it on show and answers the window to take the picture of.
    std::function<QWidget*()> show;
};

// Of a client that has been used; see contents.h.
std::vector<Scene> Scenes();
// Of a client that nobody has told yet who they are.
std::vector<Scene> FirstScenes();
