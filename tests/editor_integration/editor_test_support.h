#pragma once

// What the editor tests share: where the reverb editor's views are (from the same view
// tree built off-screen), the parameters' indices, a drag with the test's pointer and
// the check that a drag reached the host as one gesture.

#include "editor/modulator_editor_context.h"
#include "editor_host_calls.h"
#include "ui/geometry.h"
#include "x11_test_display.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace editortest {

// The editor's size in device pixels at a factor of its natural size (zoom times scale).
std::pair<int, int> EditorSizeAt(double factor);
// The index of the parameter with the ID.
int ParameterIndex(const std::string& id);
// The centre of the editor's view with the name, in logical units (scale 1), with a
// modulator's page open in the modulator area when one is given.
halvern::ZPoint ViewCentre(const std::string& name, halvern::ZModulatorSelection page = {});

// The centre of a menu's entry (logical units, scale 1): the menu that a click on the
// button with the name opens, with a modulator's page open when one is given.
halvern::ZPoint MenuItemCentre(const std::string& button, const std::string& item,
                               halvern::ZModulatorSelection page = {});

// The centre of a view in the dialog that a click on the view named clicked opens
// (logical units, scale 1), with a page open when one is given.
halvern::ZPoint DialogViewCentre(const std::string& clicked, const std::string& name,
                                 halvern::ZModulatorSelection page = {});

// The centre of the row of a folder or preset in the plug-in's preset window, as it
// opens from the header before anything was loaded.
halvern::ZPoint PresetRowCentre(const std::string& name);

// Presses button 1 at a point of a window (device pixels), moves the pointer by (dx, dy)
// pixels in steps, pumping after each, and releases unless told not to.
void Drag(editorhost::TestDisplay& display, Window window, halvern::ZPoint from, double dx, double dy,
          const std::function<void()>& pump, bool release = true);

// The calls are exactly one gesture on the parameter: its begin, at least one change
// with a value in 0..1, its end. The last value is put in lastValue.
testing::AssertionResult IsOneGesture(const editorhost::HostCalls& calls, int index, double& lastValue);

// The calls that asked for a new size.
std::vector<editorhost::HostCall> Resizes(const editorhost::HostCalls& calls);

} // namespace editortest
