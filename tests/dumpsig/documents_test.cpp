#include "tests/dumpsig/dumpsig_fixture.h"

namespace {

using namespace dumpsig_test;

TEST_F(DumpsigTest, TheManualAndTheCompletionKnowEveryOption) {
    const Outcome outcome = run("source=" SOURCE_FOLDER R"sh(
        for command in verify info strip cat fingerprint; do
            dumpsig $command --help | sed -n 's/^  \(-[^ ]*\) .*/\1/p' | tr , '\n' | sort >options
            command=$command bash -c '. "$0"; COMP_WORDS=(dumpsig "$command" -); COMP_CWORD=2; _dumpsig
                printf "%s\n" "${COMPREPLY[@]}"' $source/completion/dumpsig.bash | sort | diff options -
            while read -r option; do
                grep -qE "Fl ${option#-}( |$)" $source/man/dumpsig.1 || echo "no $option in the manual"
            done <options
        done
        mandoc -T lint $source/man/dumpsig.1)sh");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(DumpsigTest, TheExamplesOfTheManualRun) {
    run("tar -cf archive v1 other.pub; split -n 3 --numeric-suffixes=1 -a 3 archive dump.; rm v1");
    sign({dir.path("dump.001"), dir.path("dump.002"), dir.path("dump.003")});
    const Outcome outcome = run("awk '/^.Sh EXAMPLES/ {on = 1} /^.Sh CAVEATS/ {on = 0} /^.Ed/ {code = 0}\n"
                                "code; on && /^.Bd/ {code = 1}' " SOURCE_FOLDER
                                "/man/dumpsig.1 >script; . ./script; ls v1 plain.003");
    EXPECT_TRUE(matches(outcome.out,
                        "intact\nsigned with*server.pub\nintact\nintact\nsigned with *\nSHA256:* server.pub\n"
                        "plain.003\nv1\n"))
        << outcome.out;
    EXPECT_EQ(outcome.err, "");
}

TEST_F(DumpsigTest, TheCommandsForManyDumpsRun) {
    run("mkdir bin dumps dumps/three; tar -cf dumps/one.dump v1; cp v1 dumps/bad.dump\n"
        "for i in 1 2 3; do echo $i >dumps/three/$i; done; printf 'alpha\\nbeta\\n' >servers");
    sign({dir.path("dumps/one.dump")});
    sign({dir.path("dumps/bad.dump")});
    sign({dir.path("dumps/three/1"), dir.path("dumps/three/2"), dir.path("dumps/three/3")});
    // This machine stands in for all others; as a real one does, it sets SHELL for whoever logs in.
    dir.write("bin/rclone", "#!/bin/sh\nexec cat \"${2#store:}\"\n");
    dir.write(
        "bin/ssh",
        "#!/bin/sh\nwhile [ \"${1#-}\" != \"$1\" ]; do shift; done; shift\n"
        "[ \"$1\" != -- ] || shift\nexport SHELL=/bin/sh\n"
        "exec sh -c \"$(printf '%s' \"$*\" | sed s,/opt/bsa/admin/htdocs/bu_pubkey.txt,server.pub,)\"\n");
    const Outcome outcome =
        run("printf x | dd of=dumps/bad.dump conv=notrunc status=none; chmod +x bin/*; PATH=$PWD/bin:$PATH\n"
            "awk '/^```$/ {code = 0} code; /^```bash$/ {code = 1}' " SOURCE_FOLDER
            "/docs/at-scale.md >script; bash ./script; cmp v1 content 2>&1\n"
            "for task in 0 1; do SLURM_ARRAY_TASK_ID=$task SLURM_ARRAY_TASK_COUNT=2 sh verify.sbatch; done");
    EXPECT_TRUE(matches(outcome.out,
                        "not all are intact\ndigest-wrong\tDigest is wrong\tdumps/bad.dump\n"
                        "      1 digest-wrong\n      1 intact\n1 are not intact\n"
                        "SHA256:* keys/alpha.pub\nSHA256:* keys/beta.pub\nkeys/*.pub\n1 are not intact\n"
                        "intact\nsigned with *\nintact\nsigned with *\n"
                        "digest-wrong\tDigest is wrong\tdumps/bad.dump\nsomebody should look\n"
                        "*{\"verdict\":*\n{\"verdict\":*\n"))
        << outcome.out;
    EXPECT_EQ(outcome.err, "");
}

} // namespace
