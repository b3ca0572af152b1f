"""JSON texts (RFC 8259) in stored files: what is read, and what a save makes of it."""
import pytest
from conftest import Answer, case
from every_method import query_of

DEEP = "[" * 1000 + "]" * 1000


@pytest.mark.parametrize("text, saved", [
    case("of a name the last", '\ufeff[{"b":1,"a":[{},null],"b":true}]',
         '[{"a":[{},null],"b":true}]'),
    case("numbers", "[-0,1.50,1E2,-9223372036854775808,18446744073709551615]",
         "[0,1.5,100.0,-9223372036854775808,18446744073709551615]"),
    case("beyond a double", r'[88,-1e999,{"1e999":2e308,"a":"1e999\""},1e-999,7]',
         r'[88,null,{"1e999":null,"a":"1e999\""},0.0,7]'),
    case("escapes", r'[{"\u0000a":"\ud83d\ude00\u0000","\u0000":"\/\t\ud800"}]',
         '[{"\\u0000":"/\\u0009\ufffd","\\u0000a":"\U0001f600\\u0000"}]'),
    case("no UTF-8", '["\udcff"]', '["\udcff"]'), case("a thousand levels", DEEP, DEEP)])
def test_save_keeps_every_value_that_a_text_or_a_double_can_hold(appliance, text, saved):
    appliance.store(repeat=text)
    assert appliance.request(**query_of("delete_repeat")) == Answer()
    saved_bytes = saved.encode(errors="surrogateescape") + b"\n"
    assert appliance.path("repeat").read_bytes() == saved_bytes
    appliance.forget()
