// Titles of tabs that the policy opens, until their pages have told their own.
#pragma once

namespace quenby {

inline constexpr char docsTabTitle[] = "Google Docs";
inline constexpr char printTabTitle[] = "Google Drive Print";

} // namespace quenby
