# The providers of the platform layer on Linux, each one line: see qnlib_add_provider in qnLibTargets.cmake.

qnlib_add_provider(crypt32 PACKAGE OpenSSL DEBIAN libssl-dev LIBRARIES OpenSSL::Crypto)
qnlib_add_provider(advapi32 PACKAGE SQLite3 DEBIAN libsqlite3-dev LIBRARIES SQLite::SQLite3)
qnlib_add_provider(oleaut32 PACKAGE ICU COMPONENTS i18n uc DEBIAN libicu-dev LIBRARIES ICU::i18n ICU::uc)
