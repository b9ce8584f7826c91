// Channels for push notifications. The expiration is in milliseconds since 1970.
#pragma once

#include "driveapi/GTLObject.h"

namespace quenby {

// Parameter name to text, as additional properties.
class GTLDriveChannelParams : public GTLObject {
    GTL_OBJECT(GTLDriveChannelParams);
};

class GTLDriveChannel : public GTLObject {
    GTL_OBJECT(GTLDriveChannel);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(QString, address, setAddress, "address");
    GTL_PROPERTY(qint64, expiration, setExpiration, "expiration");
    GTL_PROPERTY(GTLDriveChannelParams, params, setParams, "params");
    GTL_PROPERTY(bool, payload, setPayload, "payload");
    GTL_PROPERTY(QString, resourceId, setResourceId, "resourceId");
    GTL_PROPERTY(QString, resourceUri, setResourceUri, "resourceUri");
    GTL_PROPERTY(QString, token, setToken, "token");
    GTL_PROPERTY(QString, type, setType, "type");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

} // namespace quenby
