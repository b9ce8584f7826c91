// Names and keys of the notification signals of the authorizer and the sign-in.
#pragma once

#include <QString>

namespace quenby {

// Posted by the authorizer. The two about fetches carry kGTMOAuth2FetcherKey (QObject*, valid during the call) and
// kGTMOAuth2FetchTypeKey (one of the fetch types).
inline const QString kGTMOAuth2FetchStarted = QStringLiteral("kGTMOAuth2FetchStarted");
inline const QString kGTMOAuth2FetchStopped = QStringLiteral("kGTMOAuth2FetchStopped");
inline const QString kGTMOAuth2AccessTokenRefreshed = QStringLiteral("kGTMOAuth2AccessTokenRefreshed");
// Carries kGTMOAuth2ErrorObjectKey (the server's JSON answer) and "error" (its error name), as far as there are any.
inline const QString kGTMOAuth2AccessTokenRefreshFailed = QStringLiteral("kGTMOAuth2AccessTokenRefreshFailed");
inline const QString kGTMOAuth2RefreshTokenChanged = QStringLiteral("kGTMOAuth2RefreshTokenChanged");

// Posted by the sign-in.
inline const QString kGTMOAuth2UserSignedIn = QStringLiteral("kGTMOAuth2UserSignedIn");
inline const QString kGTMOAuthNetworkLost = QStringLiteral("kGTMOAuthNetworkLost");
inline const QString kGTMOAuthNetworkFound = QStringLiteral("kGTMOAuthNetworkFound");

inline const QString kGTMOAuth2FetcherKey = QStringLiteral("fetcher");
inline const QString kGTMOAuth2FetchTypeKey = QStringLiteral("FetchType");
inline const QString kGTMOAuth2ErrorObjectKey = QStringLiteral("kGTMOAuth2ErrorObjectKey");

inline const QString kGTMOAuth2FetchTypeToken = QStringLiteral("token");
inline const QString kGTMOAuth2FetchTypeRefresh = QStringLiteral("refresh");
inline const QString kGTMOAuth2FetchTypeAssertion = QStringLiteral("assertion");
inline const QString kGTMOAuth2FetchTypeUserInfo = QStringLiteral("userInfo");

} // namespace quenby
