# Installing, so that a user finds the library with find_package(vancorexml) or pkg-config.
