# SPDX-License-Identifier: MIT
add_library(CURL::libcurl INTERFACE IMPORTED)
set(CURL_FOUND TRUE)
