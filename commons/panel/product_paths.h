#pragma once

// Where things lie in the product tree. Nothing in the program spells out a product path by hand: it asks one
// of these functions. They keep no state, compute the path at each call, and touch the file system only where
// said. What needs the product root raises Error<&ParamError, ExDefault> when the parameter source has none.

#include <string>
#include <vector>

namespace brask {

/// `a` and `b` with exactly one slash at the joint; the other piece alone when one is empty. Slashes inside
/// either piece stay as they are.
std::string joinPath(const std::string& a, const std::string& b);

/// The root of the product tree, the parameter PRODUCT_ROOT_D.
std::string getProductRootDir();
/// The backup component's directory and what lies in it.
std::string getBmmDir();
std::string getBmmConfigFile();
std::string getQaStatusFile();
std::string getBmmTmpDir();
/// An administrative utility; the directory itself, with a slash at the end, for an empty name.
std::string getAdminBinPath(const std::string& name);
std::string getAdminConfDir();
std::string getVarDir();
std::string getTestMetaFile();
std::string getLibxmlProxyPath();
/// Directories of the runtime configuration. Their values are not trimmed.
std::string getMysqlBinDir();

// What follows serves the panel's other tools.

std::string getVhostsDir();
std::string getMailnamesDir();
std::string getPgsqlBinDir();
std::string getMailmanVarDir();
std::string getMailmanArchPath();
std::string getProductLibDir();
std::string getLockDir();
std::string getInitDir();
std::string getApacheRestartLock();
std::string getMchkPath();
std::string getChrootShellPath();
std::string getCustomTemplatesDir();
std::string getApsPackagesDir();
std::string getHealthConfigFile();
std::string getBmmLogDir();
/// Any file of the backup component's directory; the ones below are those that the tools ask for.
std::string getBmmFile(const std::string& name);
std::string getMb2mdScript();
std::string getSaConvertScript();
std::string getCorrectAwStatisticsScript();
std::string getBraskXsdFile();
std::string getRestoreSpecificationXsdFile();
std::string getAgentsDir();
std::string getModuleVarPath(const std::string& name);
/// `name` below `base`, or below the virtual hosts' directory for an empty `base`.
std::string getVhostSubPath(const std::string& name, const std::string& base);
/// `a`, "/" and `b`, whatever slashes they have already.
std::string getSubPath(const std::string& a, const std::string& b);
std::string getAdminSbinPath(const std::string& name);
std::string getSiteIsolationFile();
std::string getCustomizationsFile();
std::string getApiCliScript(const std::string& name);
std::string getBackupScript(const std::string& name);
std::string getDumpingStatusFile(const std::string& dir);
std::vector<std::string> getEngineRunCommand();
/// The first of the two usual places that is a regular file, or an empty text. Looks at the file system.
std::string getMysqlConfigFile();
/// The database client and its dump utility: the MariaDB name if anything is there, otherwise the MySQL name,
/// there or not. Look at the file system.
std::string getMysqlClientPath();
std::string getMysqlDumpPath();

} // namespace brask
