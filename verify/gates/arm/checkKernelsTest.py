#!/usr/bin/env python3
"""Assembles small loops, right and wrong ones, and looks at what checkKernels.py says of them."""

import contextlib
import io
import subprocess
import tempfile
import unittest
from pathlib import Path

import checkKernels

LEAF = ["vld2.32 {d0-d1}, [r0:64]!", "vmla.f32 d2, d0, d1", "vmls.f32 d3, d0, d1",
        "vst1.32 {d2}, [r1:64]!"]
INNER = ["vld1.32 {d0}, [r0:64]!", "vmul.f32 d1, d0, d0", "vmla.f32 d2, d0, d1",
         "vmls.f32 d3, d0, d1", "vst1.32 {d2}, [r1:64]!"]
LAST = ["vld1.32 {d0}, [r0:64]!", "vmul.f32 d1, d0, d0", "vmla.f32 d2, d0, d1",
        "vmls.f32 d3, d0, d1", "vst2.32 {d2-d3}, [r1:64]!"]
FILTER = ["vld1.32 {d0-d1}, [r0]!", "vmul.f32 q1, q0, d15[1]", "vmla.f32 q2, q0, d15[0]",
          "vst1.32 {d4-d5}, [r1]!"]
SEARCH = ["vld1.32 {d0-d1}, [r0]!", "vcgt.f32 q1, q0, q2", "vadd.f32 q2, q2, q0"]


def function(name, *loops):
    lines = [f"{name}:"]
    for number, loop in enumerate(loops):
        lines += [f"{name}{number}:", *loop, "subs r2, r2, #1", f"bne {name}{number}"]
    return "\n".join([".thumb_func", *lines, "bx lr\n"])


def but(loop, old, new):
    assert old in loop
    return [new if line == old else line for line in loop]


class CheckKernels(unittest.TestCase):
    def violations(self, check, *loops):
        with tempfile.TemporaryDirectory() as folder:
            target = Path(folder) / "kernels.o"
            source = ".syntax unified\n.thumb\n.fpu neon\n.arch armv7-a\n" + function("f", *loops)
            subprocess.run(["arm-linux-gnueabihf-as", "-o", target], input=source, text=True,
                           check=True)
            with contextlib.redirect_stdout(io.StringIO()):
                return list(check([str(target)]))

    def transform(self, *more):
        good = [LEAF, LEAF, INNER, INNER, LAST, LAST]
        return self.violations(checkKernels.check_transform, *good, *more)

    def filters(self, *more):
        return self.violations(checkKernels.check_filters, *[FILTER] * 17, *more)

    def test_right_loops_pass(self):
        self.assertEqual(self.transform(), [])
        self.assertEqual(self.filters(), [])
        self.assertEqual(self.violations(checkKernels.check_tracker, SEARCH), [])

    def test_scalar_arithmetic_is_seen(self):
        for scalar in ("vadd.f32 s0, s1, s2", "vmla.f32 s0, s1, s2", "vmul.f64 d0, d1, d2",
                       "vdiv.f32 s0, s1, s2"):
            self.assertEqual(len(self.transform(INNER + [scalar])), 1, scalar)
            self.assertEqual(len(self.filters(FILTER + [scalar])), 1, scalar)

    def test_a_loop_on_scalars_alone_is_seen(self):
        scalar = ["vldmia r0!, {s0}", "vmla.f32 s1, s0, s0"]
        self.assertTrue(self.transform(scalar))
        self.assertTrue(self.filters(scalar))

    def test_other_widths_are_seen(self):
        self.assertEqual(len(self.transform(INNER + ["vadd.f32 q0, q1, q2"])), 1)
        self.assertEqual(len(self.filters(FILTER + ["vadd.f32 d0, d1, d2"])), 1)

    def test_calls_are_seen_and_branches_are_not_taken_for_them(self):
        self.assertEqual(len(self.transform(INNER + ["bl sqrtf"])), 1)
        self.assertEqual(len(self.filters(FILTER + ["blx sqrtf"])), 1)
        self.assertEqual(self.transform(["cmp r3, #1", "ble f0"] + INNER), [])

    def test_separate_sums_are_seen(self):
        separate = but(INNER, "vmls.f32 d3, d0, d1", "vsub.f32 d3, d0, d1")
        self.assertEqual(len(self.transform(separate)), 1)

    def test_plain_loads_of_leaves_are_seen(self):
        self.assertEqual(len(self.transform(LEAF + ["vld1.32 {d4}, [r0:64]"])), 1)
        loops = [LEAF, INNER, INNER, LAST, LAST]
        self.assertTrue(self.violations(checkKernels.check_transform, *loops))

    def test_plain_stores_of_the_last_pass_are_seen(self):
        self.assertEqual(len(self.transform(LAST + ["vst1.32 {d4}, [r1:64]"])), 1)
        loops = [LEAF, LEAF, INNER, INNER, LAST]
        self.assertTrue(self.violations(checkKernels.check_transform, *loops))

    def test_missing_alignment_hints_are_seen(self):
        self.assertEqual(len(self.transform(but(LAST, "vst2.32 {d2-d3}, [r1:64]!",
                                                "vst2.32 {d2-d3}, [r1]!"))), 1)

    def test_filters_that_do_not_multiply_by_a_lane_are_seen(self):
        spread = but(but(FILTER, "vmul.f32 q1, q0, d15[1]", "vmul.f32 q1, q0, q8"),
                     "vmla.f32 q2, q0, d15[0]", "vmla.f32 q2, q0, q8")
        self.assertTrue(self.violations(checkKernels.check_filters, *[FILTER] * 16, spread))

    def test_filters_that_do_not_accumulate_are_seen(self):
        separate = but(FILTER, "vmla.f32 q2, q0, d15[0]", "vadd.f32 q2, q2, q1")
        loops = [FILTER] * 12 + [separate] * 5
        self.assertTrue(self.violations(checkKernels.check_filters, *loops))

    def test_comparisons_taken_apart_are_seen(self):
        apart = SEARCH + ["vcmpe.f32 s0, s1"]
        self.assertEqual(len(self.violations(checkKernels.check_tracker, SEARCH, apart)), 1)
        scalar = ["vcmpe.f32 s0, s1"]
        self.assertEqual(self.violations(checkKernels.check_tracker, SEARCH, scalar), [])

    def test_no_loops_at_all_are_seen(self):
        for check in (checkKernels.check_transform, checkKernels.check_filters,
                      checkKernels.check_tracker):
            self.assertTrue(self.violations(check))

    def test_an_outer_loop_may_call(self):
        nested = ["mov r3, #4", "inner:", *INNER, "subs r3, r3, #1", "bne inner", "bl memcpy"]
        self.assertEqual(self.transform(nested), [])


if __name__ == "__main__":
    unittest.main()
