// The peer in its own process: npm install @duckdb/node-api, then node duckdb.mjs rows.csv (from bench_data --csv rows.csv).
// Prints the median of 21 runs after three to warm up, every value fetched.
import { DuckDBInstance } from '@duckdb/node-api';

const db = await (await DuckDBInstance.create(':memory:')).connect();
await db.run("set threads=1");
await db.run(`create table T as select ID::int ID, d::double d, L::double L, P::varchar P, S::varchar S, Grade::varchar Grade,
  Name, Std from read_csv('${process.argv[2]}', all_varchar=true)`);

async function measure(name, sql, fetch) {
  const times = [];
  let rows = 0;
  for (let i = 0; i < 24; ++i) {
    const start = process.hrtime.bigint();
    rows = await fetch(sql);
    if (i >= 3) times.push(Number(process.hrtime.bigint() - start) / 1e6);
  }
  times.sort((a, b) => a - b);
  console.log(`${name}: ${times[10].toFixed(3)} ms (${rows} rows)`);
}

const count = async (sql) => Number((await db.runAndReadAll(sql)).getRows()[0][0]);
const columns = async (sql) => (await db.runAndReadAll(sql)).getColumns()[0].length;
// The result stays in the engine's own blocks; no value crosses into the script.
const materialised = async (sql) => (await db.run(sql)).rowCount;

await measure('Count', 'select count(*) from T where d=8 and L>20', count);
await measure('Select, materialised', 'select rowid from T where d=8 and L>20', materialised);
await measure('Query, materialised', 'select * from T where d=8 and L>20', materialised);
await measure('Query, fetched', 'select * from T where d=8 and L>20', columns);
await measure('Group', 'select count(*) from T group by d', columns);
await measure('SortNumber, materialised', 'select * from T order by P::double', materialised);
await measure('SortText, materialised', 'select * from T order by Name', materialised);
