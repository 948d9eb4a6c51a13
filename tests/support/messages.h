#pragma once

// What the program answers to what it refuses.

inline constexpr const char* noForm = "Failed to parse input data";
inline constexpr const char* noJson = "Invalid JSON data";
inline constexpr const char* modeMissing = "'mode' parameter missing or invalid";
inline constexpr const char* projectRequired = "'project' parameter is required";
inline constexpr const char* signatureRequired = "'signature' parameter is required";
inline constexpr const char* dataOrFile = "Either 'data' or 'file' parameter is required";
inline constexpr const char* wrongEncoding = "Signature encoding must be 'plain' or 'base64'";
inline constexpr const char* wrongBase64 = "Invalid base64 data";
inline constexpr const char* notGenerated = "Signature generation failed";
