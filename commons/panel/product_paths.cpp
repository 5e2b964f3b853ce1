#include "commons/panel/product_paths.h"

#include "commons/panel/param_source.h"
#include "lib/runtime/bsa_conf.h"

#include <filesystem>

namespace brask {

namespace {

std::string databaseTool(const std::string& preferred, const std::string& fallback) {
    const std::string candidate = joinPath(getMysqlBinDir(), preferred);
    return std::filesystem::exists(candidate) ? candidate : joinPath(getMysqlBinDir(), fallback);
}

} // namespace

std::string joinPath(const std::string& a, const std::string& b) {
    if (a.empty()) {
        return b;
    }
    if (b.empty()) {
        return a;
    }
    if (a.back() == '/' && b.front() == '/') {
        return a + b.substr(1);
    }
    if (a.back() == '/' || b.front() == '/') {
        return a + b;
    }
    return a + "/" + b;
}

std::string getProductRootDir() {
    return getParam("PRODUCT_ROOT_D");
}

std::string getBmmDir() {
    return joinPath(getProductRootDir(), "BMM");
}

std::string getBmmConfigFile() {
    return joinPath(getBmmDir(), "log4cpp.properties");
}

std::string getQaStatusFile() {
    return joinPath(getBmmDir(), "qa-status-test.cfg");
}

std::string getBmmTmpDir() {
    return joinPath(getBmmDir(), "tmp");
}

std::string getAdminBinPath(const std::string& name) {
    return joinPath(getProductRootDir(), "/admin/bin/") + name;
}

std::string getAdminConfDir() {
    return joinPath(getProductRootDir(), "admin/conf");
}

std::string getVarDir() {
    return joinPath(getProductRootDir(), "var");
}

std::string getTestMetaFile() {
    return joinPath(getVarDir(), "test-meta.json");
}

std::string getLibxmlProxyPath() {
    return getProductRootDir() + "/admin/sbin/libxml-proxy";
}

std::string getMysqlBinDir() {
    return bsaConfGetById(kMysqlBinDir);
}

std::string getVhostsDir() {
    return bsaConfGetById(kVhostsDir);
}

std::string getMailnamesDir() {
    return bsaConfGetById(kMailnamesDir);
}

std::string getPgsqlBinDir() {
    return bsaConfGetById(kPgsqlBinDir);
}

std::string getMailmanVarDir() {
    return bsaConfGetById(kMailmanVarDir);
}

std::string getMailmanArchPath() {
    return std::string(bsaConfGetById(kMailmanRootDir)) + "/bin/arch";
}

std::string getProductLibDir() {
    return "/usr/lib/brask-9.0";
}

std::string getLockDir() {
    return "/run/lock/files";
}

std::string getInitDir() {
    return "/etc/init.d";
}

std::string getApacheRestartLock() {
    return joinPath(getLockDir(), "brask_restart_apache.lock");
}

std::string getMchkPath() {
    return getProductRootDir() + "/admin/sbin/mchk";
}

std::string getChrootShellPath() {
    return getProductRootDir() + "/bin/chrootsh";
}

std::string getCustomTemplatesDir() {
    return getProductRootDir() + "/admin/conf/templates/custom/";
}

std::string getApsPackagesDir() {
    return getProductRootDir() + "/admin/smb/application/apspackages/";
}

std::string getHealthConfigFile() {
    return getProductRootDir() + "/var/custom-health-config.xml";
}

std::string getBmmLogDir() {
    return joinPath("/var/log/brask", "BMM");
}

std::string getBmmFile(const std::string& name) {
    return joinPath(getBmmDir(), name);
}

std::string getMb2mdScript() {
    return getBmmFile("mb2md.pl");
}

std::string getSaConvertScript() {
    return getBmmFile("sa_convert.sh");
}

std::string getCorrectAwStatisticsScript() {
    return getBmmFile("correct_aw_statistics.pl");
}

std::string getBraskXsdFile() {
    return getBmmFile("brask.xsd");
}

std::string getRestoreSpecificationXsdFile() {
    return getBmmFile("restore-specification.xsd");
}

std::string getAgentsDir() {
    return getBmmFile("agents");
}

std::string getModuleVarPath(const std::string& name) {
    return joinPath(joinPath(getProductRootDir(), joinPath("var", "modules")), name);
}

std::string getVhostSubPath(const std::string& name, const std::string& base) {
    return joinPath(base.empty() ? getVhostsDir() : base, name);
}

std::string getSubPath(const std::string& a, const std::string& b) {
    return a + "/" + b;
}

std::string getAdminSbinPath(const std::string& name) {
    return joinPath(getProductRootDir(), "admin/sbin/" + name);
}

std::string getSiteIsolationFile() {
    return getAdminConfDir() + "/site_isolation_settings.ini";
}

std::string getCustomizationsFile() {
    return getAdminConfDir() + "/customizations.conf";
}

std::string getApiCliScript(const std::string& name) {
    return joinPath(getProductRootDir(), "admin/plib/api-cli/" + name + ".php");
}

std::string getBackupScript(const std::string& name) {
    return joinPath(getProductRootDir(), "admin/plib/backup/" + name + ".php");
}

std::string getDumpingStatusFile(const std::string& dir) {
    return joinPath(dir, "dumping-status.xml");
}

std::vector<std::string> getEngineRunCommand() {
    return {joinPath(getProductRootDir(), "bin/kw-engine-braskrun")};
}

std::string getMysqlConfigFile() {
    for (const char* path : {"/etc/my.cnf", "/etc/mysql/my.cnf"}) {
        if (std::filesystem::status(path).type() == std::filesystem::file_type::regular) {
            return path;
        }
    }
    return {};
}

std::string getMysqlClientPath() {
    return databaseTool("mariadb", "mysql");
}

std::string getMysqlDumpPath() {
    return databaseTool("mariadb-dump", "mysqldump");
}

} // namespace brask
