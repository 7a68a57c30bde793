#pragma once

#include <QProcessEnvironment>

namespace quillmere {

class AppModel;

// Lets a script run the application unattended and capture its window, by environment variables:
//   QUILLMERE_SNAPSHOT  a file path: 4 s after the start the window's picture is written there as PNG, and
//                       the application quits
//   QUILLMERE_AUTORUN   "generate": one generation runs before the picture is taken
//   QUILLMERE_LIGHT     any value: the picture is taken in the light appearance (1 s later)
// The last two count only together with the first.
namespace DebugHooks {

// Called once, when the window's content first appears. Returns at once.
void install(AppModel& model,
             const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

}  // namespace DebugHooks
}  // namespace quillmere
