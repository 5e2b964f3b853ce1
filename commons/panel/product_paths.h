#pragma once

// Where things are in the product tree. Nothing in the program spells out a product path by hand: it asks one
// of these functions. They keep no state, compute the path at each call, and touch the file system only where
// said. What needs the product root raises Error<&ParamError, ExDefault> when the parameter source has none.

#include <string>
#include <vector>

namespace brask {

/// `a` and `b` with exactly one slash at the joint; the other piece alone when one is empty. Slashes inside
/// either piece stay as they are.
std::string joinPath(const std::string& a, const std::string& b);

// What the tool of this repository and its library ask for.

/// The root of the product tree, the parameter PRODUCT_ROOT_D.
std::string getProductRootDir();
/// The backup component's directory.
std::string getBmmDir();
/// The debug log's configuration.
std::string getBmmConfigFile();
/// The switch that makes a utility report a status for a test.
std::string getQaStatusFile();
/// Where temporary files go when nothing else is said.
std::string getBmmTmpDir();
/// An administrative utility; the directory itself, with a slash at the end, for an empty name.
std::string getAdminBinPath(const std::string& name);
std::string getAdminConfDir();
std::string getVarDir();
/// What a test leaves for the error reports.
std::string getTestMetaFile();
/// The utility that validates documents against a schema.
std::string getLibxmlProxyPath();
/// The database client's directory, as the runtime configuration has it.
std::string getMysqlBinDir();

// What the panel's other tools ask for. Directories of the runtime configuration come as they are there, not
// trimmed.

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
