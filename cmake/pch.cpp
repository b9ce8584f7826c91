// Belongs to the target whose precompiled header every other target shares; a target needs a source.
