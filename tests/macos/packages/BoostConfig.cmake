# SPDX-License-Identifier: MIT
add_library(Boost::headers INTERFACE IMPORTED)
set(Boost_FOUND TRUE)
