// Counts what the loops over frequencies, over digital events and over the steps of a period take from the heap. The
// counting operators serve the whole test program.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "analyses/ac.h"
#include "analyses/digital.h"
#include "analyses/evaluate.h"
#include "analyses/explicit_step.h"
#include "analyses/shot.h"
#include "dc_fixture.h"
#include "output/row_writers.h"

namespace {
long n_allocations = 0;
}

[[gnu::noinline]] void* operator new(std::size_t n) {
    ++n_allocations;
    if (void* p = std::malloc(n > 0 ? n : 1)) return p;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
    ++n_allocations;
    return std::malloc(n > 0 ? n : 1);
}
[[gnu::noinline]] void operator delete(void* p) noexcept { std::free(p); }
[[gnu::noinline]] void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { std::free(p); }

TEST(solve_ac, allocates_nothing_from_the_second_frequency_on) {
    const temp_folder folder;
    circuit c = circuit_of(
        "title: test\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcac p=a n=0 a_ac=1\n"
        "eelement name=R1 type=r p=a n=b\neelement name=C1 type=c p=b n=0\neelement name=D1 type=diode p=b n=0\n"
        "eelement name=L1 type=l p=b n=0\neelement name=M type=voltmeter_fb p=b n=0 y=x\n"
        "gelement name=F type=lag_1 x=x y=y\ngelement name=P type=mult_2a x1=x x2=y y=z\n"
        "outvar: v=nodev_ac_of_b i=i_ac_of_D1 p=pwr_elec_ac_of_R1 z=var_ac_of_z\nend_circuit\nbegin_solve\nsolve_type "
        "ac\n"
        "vary_freq from 1 to 1M type log n_points 500\nbegin_output\nfilename o.dat\n"
        "variables: mag_of_v phase_of_v mag_of_i phase_of_i p mag_of_z phase_of_z\nend_output\nend_solve\nend_cf\n",
        installed_libraries());
    run_state r(c);
    long before = 0;
    run_and_listen([&] {
        prepare_circuit(r);
        read_block(r, 0);
        open_out_files(r.slv, c);
        set_mat_1_ac(r);
        calc_acparms(r);
        r.slv.now.i_sweep = 0;
        take_bias(r);
        for (int k = 0; k < 500; ++k) {
            r.slv.now.i_freq = k;
            r.slv.now.freq = r.slv.task.freq_array[at(k)];
            solve_ac(r);
            write_ac(r.slv, c, r.flags);
            if (k == 0) before = n_allocations;
        }
        before = n_allocations - before;
    });
    EXPECT_EQ(before, 0);
    EXPECT_GT(n_allocations, 0);
}

TEST(digital_events, take_nothing_from_the_heap) {
    const temp_folder folder;
    circuit c = circuit_of(
        "title: test\nbegin_circuit\ndelement name=K type=clock y=ck t1=5n t2=5n\n"
        "delement name=L type=clock y=cl t1=5.00005n t2=4.99995n\n"
        "delement name=U type=dsrc y=up y0=1\ndelement name=Z type=dsrc y=r\n"
        "delement name=N type=counter_4 clk=ck r=r up=up q0=q0 q1=q1 q2=q2 q3=q3\n"
        "delement name=G type=xor a=q0 b=cl y=g td_rise=0 td_fall=0\ndelement name=I type=not a=g y=h\n"
        "end_circuit\nbegin_solve\nsolve_type trns\nmethod: t_start=0 t_end=1m\nend_solve\nend_cf\n",
        installed_libraries());
    run_state r(c);
    long before = 0;
    run_and_listen([&] {
        prepare_circuit(r);
        read_block(r, 0);
        init_sol(r);
        begin_events(r);
        before = n_allocations;
        for (int k = 0; k < 20000; ++k) {
            r.flags.time_given = next_event(r, 1.0);
            dbe_process(r, r.flags.time_given);
            dbe_schedule(r);
        }
    });
    EXPECT_GT(r.flags.time_given, 1e-5);
    EXPECT_EQ(n_allocations - before, 0);
}

TEST(explicit_steps, take_nothing_from_the_heap) {
    const temp_folder folder;
    circuit c = circuit_of(
        "title: test\nbegin_circuit\nxelement name=S type=srcac y=u\nxelement name=E type=sum_2 x1=u x2=y y=e k2=-1\n"
        "xelement name=Y type=filter_z0_p1 x=e y=y\nxelement name=I type=intgrtr_2 x=u y=th\n"
        "xelement name=D type=delay_2 x=y y=d\nxelement name=K type=clock y=ck\nend_circuit\nbegin_solve\n"
        "solve_type trns\nmethod: RK4=yes t_start=0 t_end=1 delt_const_x=1m\nend_solve\nend_cf\n",
        installed_libraries());
    run_state r(c);
    long before = 0;
    run_and_listen([&] {
        prepare_circuit(r);
        read_block(r, 0);
        one_time_parms(r);
        init_guess_explicit(r);
        prepare_explicit(r);
        const explicit_rule& rule = *rule_of(r.slv.method);
        r.slv.now.delta_t_x = 1e-3;
        xbe_find_nextbreak(r);
        for (int k = 0; k < 500; ++k) {
            xbce_modulo(r);
            keep_old_states(r.explicits);
            take_stages(r, rule, 1e-3, false);
            form_new_states(r.explicits, rule, 1e-3);
            evaluate_explicit(r, r.slv.now.time_x += 1e-3);
            check_tnext1_x(r);
            check_tnext2_x(r);
            xbe_save_history(r);
            if (k == 0) before = n_allocations;
        }
        before = n_allocations - before;
    });
    EXPECT_EQ(before, 0);
}

TEST(solve_ssw_1, allocates_as_much_for_ten_periods_as_for_one) {
    const temp_folder folder;
    const auto allocations = [](const std::string& periods) {
        circuit c = circuit_of(
            "title: test\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcac p=a n=0 a=5 f_hz=1k\n"
            "eelement name=R1 type=r p=a n=b\neelement name=D1 type=diode p=b n=c\neelement name=C1 type=c p=c n=0\n"
            "eelement name=L1 type=l p=c n=d\neelement name=R2 type=r p=d n=0\n"
            "eelement name=M type=voltmeter_fb p=c n=0 y=x\ngelement name=F type=lag_1 x=x y=y\nend_circuit\n"
            "begin_solve\nsolve_type ssw\nmethod: ssw_period=1m trapezoidal=yes ssw_period_mult=" +
                periods + "\nend_solve\nend_cf\n",
            installed_libraries());
        run_state r(c);
        long n = 0;
        run_and_listen([&] {
            prepare_circuit(r);
            read_block(r, 0);
            run_block(r);
            const long before = n_allocations;
            solve_ssw_1(r, shot::search);
            n = n_allocations - before;
        });
        return n;
    };
    EXPECT_EQ(allocations("10"), allocations("1"));
}
