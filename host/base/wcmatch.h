#pragma once
// The host's wild-card patterns.

/// RTNORM when `text` matches `pattern`, else RTERROR. Case counts. In a pattern:
/// `*` any run, `?` any character, `#` a digit, `@` a letter, `.` neither letter nor digit, `[abc]`, `[a-z]`,
/// `[~abc]` a set or its complement, `~` at the beginning: whatever doesn't match the rest, `,` between
/// alternatives, `` ` `` takes the next character as it stands.
int kvutWcMatch(const wchar_t* text, const wchar_t* pattern);
