// The objects inside a file.
#pragma once

#include "driveapi/GTLObject.h"

namespace quenby {

class GTLDriveFileLabels : public GTLObject {
    GTL_OBJECT(GTLDriveFileLabels);

public:
    GTL_PROPERTY(bool, hidden, setHidden, "hidden");
    GTL_PROPERTY(bool, restricted, setRestricted, "restricted");
    GTL_PROPERTY(bool, starred, setStarred, "starred");
    GTL_PROPERTY(bool, trashed, setTrashed, "trashed");
    GTL_PROPERTY(bool, viewed, setViewed, "viewed");
};

// MIME type to link, as additional properties.
class GTLDriveFileExportLinks : public GTLObject {
    GTL_OBJECT(GTLDriveFileExportLinks);
};

// An application's identifier to the link that opens the file with it, as additional properties.
class GTLDriveFileOpenWithLinks : public GTLObject {
    GTL_OBJECT(GTLDriveFileOpenWithLinks);
};

// Metres above sea level, and degrees.
class GTLDriveFileImageMediaMetadataLocation : public GTLObject {
    GTL_OBJECT(GTLDriveFileImageMediaMetadataLocation);

public:
    GTL_PROPERTY(double, altitude, setAltitude, "altitude");
    GTL_PROPERTY(double, latitude, setLatitude, "latitude");
    GTL_PROPERTY(double, longitude, setLongitude, "longitude");
};

// What the camera wrote; the exposure time is in seconds, lengths in millimetres, the distance in metres, the size in
// pixels, the rotation in quarter turns clockwise.
class GTLDriveFileImageMediaMetadata : public GTLObject {
    GTL_OBJECT(GTLDriveFileImageMediaMetadata);

public:
    GTL_PROPERTY(double, aperture, setAperture, "aperture");
    GTL_PROPERTY(QString, cameraMake, setCameraMake, "cameraMake");
    GTL_PROPERTY(QString, cameraModel, setCameraModel, "cameraModel");
    GTL_PROPERTY(QString, colorSpace, setColorSpace, "colorSpace");
    GTL_PROPERTY(QString, date, setDate, "date");
    GTL_PROPERTY(double, exposureBias, setExposureBias, "exposureBias");
    GTL_PROPERTY(QString, exposureMode, setExposureMode, "exposureMode");
    GTL_PROPERTY(double, exposureTime, setExposureTime, "exposureTime");
    GTL_PROPERTY(bool, flashUsed, setFlashUsed, "flashUsed");
    GTL_PROPERTY(double, focalLength, setFocalLength, "focalLength");
    GTL_PROPERTY(qint64, height, setHeight, "height");
    GTL_PROPERTY(qint64, isoSpeed, setIsoSpeed, "isoSpeed");
    GTL_PROPERTY(QString, lens, setLens, "lens");
    GTL_PROPERTY(GTLDriveFileImageMediaMetadataLocation, location, setLocation, "location");
    GTL_PROPERTY(double, maxApertureValue, setMaxApertureValue, "maxApertureValue");
    GTL_PROPERTY(QString, meteringMode, setMeteringMode, "meteringMode");
    GTL_PROPERTY(qint64, rotation, setRotation, "rotation");
    GTL_PROPERTY(QString, sensor, setSensor, "sensor");
    GTL_PROPERTY(qint64, subjectDistance, setSubjectDistance, "subjectDistance");
    GTL_PROPERTY(QString, whiteBalance, setWhiteBalance, "whiteBalance");
    GTL_PROPERTY(qint64, width, setWidth, "width");
};

class GTLDriveFileVideoMediaMetadata : public GTLObject {
    GTL_OBJECT(GTLDriveFileVideoMediaMetadata);

public:
    GTL_PROPERTY(qint64, durationMillis, setDurationMillis, "durationMillis");
    GTL_PROPERTY(qint64, height, setHeight, "height");
    GTL_PROPERTY(qint64, width, setWidth, "width");
};

class GTLDriveFileIndexableText : public GTLObject {
    GTL_OBJECT(GTLDriveFileIndexableText);

public:
    GTL_PROPERTY(QString, text, setText, "text");
};

// The image is URL-safe Base64 (RFC 4648, section 5).
class GTLDriveFileThumbnail : public GTLObject {
    GTL_OBJECT(GTLDriveFileThumbnail);

public:
    GTL_PROPERTY(QString, image, setImage, "image");
    GTL_PROPERTY(QString, mimeType, setMimeType, "mimeType");
};

} // namespace quenby
