#pragma once

namespace brask {

/// Makes OpenSSL ready for this process. No configuration file is read, whatever OPENSSL_CONF says: it can
/// name code to be loaded. Nor are the tables of the algorithms' old names filled, which nothing here asks
/// and which cost a fifth of a short run.
///
/// To be called at the start of main, before anything else of OpenSSL: later it has no effect. Raises
/// OpenSslException.
void setUpOpenSsl();

} // namespace brask
