// The colours: what is written can be read.
import QtQuick
import QtTest
import Quillomat.Theme

TestCase {
    name: "Theme"

    function linear(channel) {
        return channel <= 0.03928 ? channel / 12.92 : Math.pow((channel + 0.055) / 1.055, 2.4);
    }
    function luminance(c) {
        return 0.2126 * linear(c.r) + 0.7152 * linear(c.g) + 0.0722 * linear(c.b);
    }
    function contrast(a, b) {
        const x = luminance(a), y = luminance(b);
        return (Math.max(x, y) + 0.05) / (Math.min(x, y) + 0.05);
    }

    function test_textsStandOutFromTheirGrounds_data() {
        const rows = [];
        for (const ink of ["text", "secondaryText", "accent"])
            for (const ground of ["ground", "card", "raised", "cardPressed"])
                rows.push({ tag: ink + " on " + ground, ink: Theme[ink], ground: Theme[ground] });
        rows.push({ tag: "chip", ink: Theme.secondaryText, ground: Theme.wellTop });
        rows.push({ tag: "inkOnAccent", ink: Theme.inkOnAccent, ground: Theme.accent });
        return rows;
    }
    function test_textsStandOutFromTheirGrounds(row) {
        verify(contrast(row.ink, row.ground) >= 4.5, contrast(row.ink, row.ground));
    }
    function test_targetsFitAFinger() {
        verify(Theme.target >= 44);
    }
}
