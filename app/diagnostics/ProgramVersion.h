// Which Quenby this is. Threads: any.
#pragma once

#include <QString>

namespace quenby {

// "0.1.0".
QString programVersion();
// The first digits of the commit that it was built from; "release" for sources that are no checkout.
QString programBuild();
QString programCopyright();

} // namespace quenby
