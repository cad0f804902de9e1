// The peer in JavaScript: nodemailer over one pooled connection, the same template rendered per recipient
// (escaped values, plain text beside the HTML), the picture from its data address as an inline part
// (attachDataUrls), the same attachment and List-Unsubscribe header. Messages go one after another, as ours do.
// Usage: node peer_nodemailer.js HOST PORT N ASSETS TEMPLATE. Prints "rate <messages/s>" and "cpu_us <CPU/message>".
'use strict';
const fs = require('fs');
const net = require('net');
const nodemailer = require('nodemailer');

// At its best: without Nagle's delay, nodemailer's separate small writes (the end of DATA) otherwise wait
// for the server's delayed acknowledgement, some 40 ms a message.
const connect = net.Socket.prototype.connect;
net.Socket.prototype.connect = function (...args) {
    this.setNoDelay(true);
    return connect.apply(this, args);
};

const [host, port, count, assets, templatePath] = process.argv.slice(2);
const picture = fs.readFileSync(`${assets}/picture.png`);
const listino = fs.readFileSync(`${assets}/listino.pdf`);
const template = fs.readFileSync(templatePath, 'utf8')
    .replace('{{immagine}}', `data:image/png;base64,${picture.toString('base64')}`);
const plainTemplate = template.replace(/<[^>]+>/g, '').replace(/\n{2,}/g, '\n\n');
const escape = (s) => s.replace(/&/g, '&amp;').replace(/</g, '&lt;').replace(/>/g, '&gt;')
    .replace(/"/g, '&quot;').replace(/'/g, '&#39;');

const transport = nodemailer.createTransport({
    host, port: Number(port), secure: false, ignoreTLS: true,
    pool: true, maxConnections: 1, maxMessages: Infinity,
});

(async () => {
    const n = Number(count);
    const cpu = process.cpuUsage();
    const start = process.hrtime.bigint();
    for (let i = 0; i < n; i++) {
        const nome = `Cliente ${i}`;
        const fill = (t) => t.replaceAll('{{nome}}', escape(nome)).replaceAll('{{citta}}', 'Bari');
        await transport.sendMail({
            from: '"Ferramenta Rossi" <negozio@prova.example>',
            to: `cliente${i}@prova.example`,
            subject: `Novità di primavera per ${nome}`,
            html: fill(template),
            text: fill(plainTemplate),
            attachDataUrls: true,
            attachments: [{ filename: 'listino.pdf', content: listino, contentType: 'application/pdf' }],
            list: { unsubscribe: 'mailto:negozio@prova.example?subject=Cancellami' },
        });
    }
    const seconds = Number(process.hrtime.bigint() - start) / 1e9;
    const used = process.cpuUsage(cpu);
    transport.close();
    console.log(`rate ${(n / seconds).toFixed(1)}`);
    console.log(`cpu_us ${((used.user + used.system) / n).toFixed(1)}`);
})().catch((e) => { console.error(e); process.exit(1); });
