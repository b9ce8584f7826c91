#include "app/changes/RefusedPlace.h"

#include "app/uploads/transfer/DriveAnswer.h"

namespace quenby {

bool isPlaceRefused(const Error& error) {
    const qint64 status = driveStatusOf(error);
    return status == 400 || status == 404 || status == 410;
}

} // namespace quenby
