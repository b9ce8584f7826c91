// The application's icon, in every size that the program carries. Threads: the main thread.
#pragma once

#include <QIcon>

namespace quenby {

// The desktop's icon theme comes first, so that who themes the desktop themes Quenby.
QIcon applicationIcon();

} // namespace quenby
