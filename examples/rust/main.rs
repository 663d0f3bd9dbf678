// SPDX-License-Identifier: Apache-2.0
// rust CONFIGURATION_URL: reports a run from Rust, with a binding of what it needs. Build it with
//
//     rustc main.rs --crate-name rust -L native=PREFIX/lib

use std::ffi::{CStr, CString};
use std::marker::PhantomData;
use std::os::raw::c_char;
use std::ptr::{null, null_mut};

enum RawReport {}
enum RawPool {}
type Text = *const c_char;

#[link(name = "ztportal")]
extern "C" {
    fn zt_last_error() -> Text;
    fn zt_report_create(url: Text, customer: Text, application: Text, version: Text, flags: u32,
        report: *mut *mut RawReport) -> i32;
    fn zt_report_destroy(report: *mut RawReport);
    fn zt_report_send(report: *mut RawReport) -> i32;
    fn zt_report_add_pool(report: *mut RawReport, kind: Text, time: i64,
        pool: *mut *mut RawPool) -> i32;
    fn zt_pool_set_string_n(pool: *mut RawPool, key: Text, value: Text, length: usize) -> i32;
}
const NOW: i64 = i64::MAX;

fn check(status: i32) -> Result<(), String> {
    // The sentence belongs to the library and is overwritten by the next failure, so it is copied.
    let sentence = || unsafe { CStr::from_ptr(zt_last_error()) }.to_string_lossy().into_owned();
    if status == 0 { Ok(()) } else { Err(sentence()) }
}

fn c(text: &str) -> CString { CString::new(text).expect("a text with a zero byte") }

struct Report(*mut RawReport); // not Sync: one thread at a time may use it
struct Pool<'a>(*mut RawPool, PhantomData<&'a Report>); // cannot outlive its report

impl Report {
    fn new(url: &str, customer: &str, version: &str) -> Result<Report, String> {
        let (url, customer, version) = (c(url), c(customer), c(version));
        let mut raw = null_mut();
        check(unsafe { zt_report_create(url.as_ptr(), customer.as_ptr(), null(), version.as_ptr(),
            0, &mut raw) })?;
        Ok(Report(raw))
    }
    fn add_pool(&self, kind: &str) -> Result<Pool<'_>, String> {
        let mut raw = null_mut();
        check(unsafe { zt_report_add_pool(self.0, c(kind).as_ptr(), NOW, &mut raw) })?;
        Ok(Pool(raw, PhantomData))
    }
    fn send(&self) -> Result<(), String> { check(unsafe { zt_report_send(self.0) }) }
}
impl Drop for Report {
    fn drop(&mut self) { unsafe { zt_report_destroy(self.0) } }
}
impl Pool<'_> {
    fn set(&self, key: &str, value: &str) -> Result<(), String> {
        let text = value.as_ptr().cast();
        check(unsafe { zt_pool_set_string_n(self.0, c(key).as_ptr(), text, value.len()) })
    }
}

fn main() -> Result<(), String> {
    let url = std::env::args().nth(1).ok_or("usage: rust CONFIGURATION_URL")?;
    let report = Report::new(&url, "Kelvane", "2.1")?;
    let run = report.add_pool("execution")?;
    run.set("startPoint", "setup")?;
    run.set("endPoint", "finish")?;
    report.send()?;
    println!("The server accepted the report.");
    Ok(())
}
