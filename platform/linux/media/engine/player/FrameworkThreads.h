// Threads for what the media framework keeps waiting: its first start, files without an end.
#pragma once

class QThreadPool;

namespace quenby {

// Not the toolkit's own: the main thread lends that one's threads for painting, and would wait until the framework is
// done. Threads: any.
QThreadPool& frameworkThreads();

} // namespace quenby
