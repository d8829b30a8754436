// Keeps the example library non-empty while the example classes are header-only.
